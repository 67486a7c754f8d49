#include "quorvance/check_point.h"

#include "base/json_exchange.h"
#include "model/check_point_json.h"

namespace quorvance {
namespace {

constexpr std::string_view kPaymentKey = "payment";
constexpr std::string_view kBillingAddressKey = "billingAddress";

/// Adds the record under the key, an empty object when it is absent.
template <class Record>
void putRecordOrEmpty(Json& object, std::string_view key,
                      const std::shared_ptr<const Record>& record) {
  putMember(object, key, record ? record->getJson() : Json::object());
}

/// The record under the key, absent unless an object stands there.
template <class Record>
std::shared_ptr<const Record> findRecord(const JsonSource& json, std::string_view key) {
  const JsonView view(json);
  const Json* object = findObject(*view, key);
  return object == nullptr ? nullptr : std::make_shared<const Record>(Record::fromJson(*object));
}

}  // namespace

CheckPointBase::~CheckPointBase() = default;

void CheckPointContent::write(JsonSink& sink) const {
  Json object = openCheckPoint(*this, 2);
  const JsonDiscarder discarder(object);
  putAdditionalData(object, *this);
  giveJson(sink, std::move(object));
}

void CheckPointContent::writeWithUser(JsonSink& sink,
                                      const std::shared_ptr<const User>& user) const {
  Json object = openCheckPoint(*this, 3);
  const JsonDiscarder discarder(object);
  // A registration alone writes "additionalData" before its user.
  const bool isRegistration = type == CheckPointType::REGISTER;
  if (isRegistration) putAdditionalData(object, *this);
  putRecordOrEmpty(object, kUserKey, user);
  if (!isRegistration) putAdditionalData(object, *this);
  giveJson(sink, std::move(object));
}

// The one checkpoint that builds on the base result, so its type word follows `type`.
void CheckPointContent::writePaymentMethod(
    JsonSink& sink, const std::shared_ptr<const User>& user,
    const std::shared_ptr<const Payment>& payment,
    const std::shared_ptr<const Address>& billingAddress) const {
  Json object = openCheckPoint(*this, 5);
  const JsonDiscarder discarder(object);
  putAdditionalData(object, *this);
  putRecordOrEmpty(object, kPaymentKey, payment);
  putRecordOrEmpty(object, kBillingAddressKey, billingAddress);
  putRecordOrEmpty(object, kUserKey, user);
  giveJson(sink, std::move(object));
}

std::optional<CheckPointType> CheckPointContent::readType(const JsonSource& json) {
  const JsonView view(json);
  const std::string* word = findText(*view, kCheckPointTypeKey);
  return word == nullptr ? std::nullopt : CheckPointTypeToString::fromNillableString(*word);
}

std::shared_ptr<const User> CheckPointContent::readUser(const JsonSource& json) {
  return findRecord<User>(json, kUserKey);
}

std::shared_ptr<const Payment> CheckPointContent::readPayment(const JsonSource& json) {
  return findRecord<Payment>(json, kPaymentKey);
}

std::shared_ptr<const Address> CheckPointContent::readBillingAddress(const JsonSource& json) {
  return findRecord<Address>(json, kBillingAddressKey);
}

Json openCheckPoint(const CheckPointContent& content, std::size_t members) {
  Json object = makeObject(members);
  putMember(object, kCheckPointTypeKey, CheckPointTypeToString::toString(content.type));
  return object;
}

void putAdditionalData(Json& object, const CheckPointContent& content) {
  if (content.additionalData == nullptr) return;
  const JsonView data(*content.additionalData);
  putMember(object, kAdditionalDataKey, isNestedTooDeep(*data) ? unwritableJson() : *data);
}

}  // namespace quorvance
