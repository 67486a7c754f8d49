#include "quorvance/add_payment_method.h"

#include <utility>

#include "model/check_point_json.h"

namespace quorvance {
namespace {

constexpr std::string_view kPaymentKey = "payment";
constexpr std::string_view kBillingAddressKey = "billingAddress";

std::shared_ptr<const Payment> cardByToken(std::string token) {
  auto card = std::make_shared<CreditCardDetail>(CreditCardDetail{.cardToken = std::move(token)});
  return std::make_shared<Payment>(Payment{.creditCardDetail = std::move(card)});
}

}  // namespace

AddPaymentMethod::AddPaymentMethod(std::shared_ptr<const User> user,
                                   std::shared_ptr<const Payment> payment,
                                   std::shared_ptr<const Address> billingAddress)
    : CheckPoint(CheckPointType::ADD_PAYMENT_METHOD),
      user_(std::move(user)),
      payment_(std::move(payment)),
      billingAddress_(std::move(billingAddress)) {}

AddPaymentMethod::AddPaymentMethod(std::string userId, std::string paymentMethodToken)
    : AddPaymentMethod(std::make_shared<User>(User{.userId = std::move(userId)}),
                       cardByToken(std::move(paymentMethodToken)), nullptr) {}

std::unique_ptr<AddPaymentMethod> AddPaymentMethod::fromJson(const Json& json) {
  auto payment = findRecord<Payment>(json, kPaymentKey);
  auto address = findRecord<Address>(json, kBillingAddressKey);
  auto checkPoint = std::make_unique<AddPaymentMethod>(findRecord<User>(json, kUserKey),
                                                       std::move(payment), std::move(address));
  checkPoint->readAdditionalData(json);
  return checkPoint;
}

// The one checkpoint that builds on the base result, so its type word follows `type`.
Json AddPaymentMethod::getJson() const {
  Json base = CheckPoint::getJson();
  const JsonDiscarder baseDiscarder(base);
  Json object = makeObject(5);
  JsonDiscarder discarder(object);
  for (auto& member : base.get_ref<Json::object_t&>()) {
    putMember(object, member.first, std::move(member.second));
  }
  putRecordOrEmpty(object, kPaymentKey, payment_);
  putRecordOrEmpty(object, kBillingAddressKey, billingAddress_);
  putRecordOrEmpty(object, kUserKey, user_);
  discarder.keep();
  return object;
}

}  // namespace quorvance
