#pragma once

#include <memory>
#include <string>
#include <utility>

#include "quorvance/check_point.h"
#include "quorvance/payment.h"
#include "quorvance/user.h"

namespace quorvance {
inline namespace QUORVANCE_JSON_NAMESPACE {

/// A user adds a payment instrument. Absent records are written as {}.
class AddPaymentMethod : public CheckPoint {
 public:
  AddPaymentMethod(std::shared_ptr<const User> user, std::shared_ptr<const Payment> payment,
                   std::shared_ptr<const Address> billingAddress)
      : CheckPoint(CheckPointType::ADD_PAYMENT_METHOD),
        user_(std::move(user)),
        payment_(std::move(payment)),
        billingAddress_(std::move(billingAddress)) {}
  /// A user of whom only the identifier is known, and a card of which only the token is.
  AddPaymentMethod(std::string userId, std::string paymentMethodToken)
      : AddPaymentMethod(std::make_shared<User>(User{.userId = std::move(userId)}),
                         cardByToken(std::move(paymentMethodToken)), nullptr) {}

  /// Never fails: a key of another type is ignored, "checkpoint_type" is not read.
  static std::unique_ptr<AddPaymentMethod> fromJson(const Json& json) {
    const JsonSource source = jsonSource(json);
    return rebuilt<AddPaymentMethod>(json, CheckPointContent::readUser(source),
                                     CheckPointContent::readPayment(source),
                                     CheckPointContent::readBillingAddress(source));
  }
  Json getJson() const override {
    return contentOf(type(), [this](const auto& content, JsonSink& sink) {
      content.writePaymentMethod(sink, user_, payment_, billingAddress_);
    });
  }

  const std::shared_ptr<const User>& user() const { return user_; }
  const std::shared_ptr<const Payment>& payment() const { return payment_; }
  const std::shared_ptr<const Address>& billingAddress() const { return billingAddress_; }

 private:
  static std::shared_ptr<const Payment> cardByToken(std::string token) {
    auto card = std::make_shared<CreditCardDetail>(CreditCardDetail{.cardToken = std::move(token)});
    return std::make_shared<Payment>(Payment{.creditCardDetail = std::move(card)});
  }

  std::shared_ptr<const User> user_;
  std::shared_ptr<const Payment> payment_;
  std::shared_ptr<const Address> billingAddress_;
};

}  // namespace QUORVANCE_JSON_NAMESPACE
}  // namespace quorvance
