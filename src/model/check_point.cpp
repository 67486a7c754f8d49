#include "quorvance/check_point.h"

#include <utility>

#include "base/json.h"
#include "model/check_point_json.h"
#include "quorvance/account_check_points.h"
#include "quorvance/add_payment_method.h"
#include "quorvance/transaction.h"

namespace quorvance {
namespace {

std::optional<CheckPointType> typeNamedIn(const Json& json) {
  const std::string* word = findText(json, kCheckPointTypeKey);
  return word == nullptr ? std::nullopt : CheckPointTypeToString::fromNillableString(*word);
}

std::unique_ptr<CheckPoint> rebuild(CheckPointType type, const Json& json) {
  switch (type) {
    case CheckPointType::LAUNCH:
      return Launch::fromJson(json);
    case CheckPointType::REGISTER:
      return Register::fromJson(json);
    case CheckPointType::LOGIN:
      return Login::fromJson(json);
    case CheckPointType::TRANSACTION:
      return Transaction::fromJson(json);
    case CheckPointType::ADD_PAYMENT_METHOD:
      return AddPaymentMethod::fromJson(json);
    case CheckPointType::GENERAL:
      return General::fromJson(json);
    // Two of these have a class and are still not rebuilt: that gap is intended.
    case CheckPointType::UPDATE_DETAILS:
    case CheckPointType::UPDATE_USER_INFO:
    case CheckPointType::PASSWORD_CHANGE:
    case CheckPointType::NONE:
      break;
  }
  return nullptr;
}

// Stands for one that is nested too deep to be copied.
Json unwritableObject() {
  Json object = makeObject(1);
  putMember(object, kAdditionalDataKey, unwritableJson());
  return object;
}

}  // namespace

CheckPoint::CheckPoint(CheckPointType type) : type_(type) {}

CheckPoint::~CheckPoint() = default;

std::unique_ptr<CheckPoint> CheckPoint::fromJson(const Json& json) {
  const auto type = typeNamedIn(json);
  if (!type) return nullptr;
  auto checkPoint = std::make_unique<CheckPoint>(*type);
  checkPoint->readAdditionalData(json);
  return checkPoint;
}

std::unique_ptr<CheckPoint> CheckPoint::parse(const Json& value, PlatformError* error) {
  const auto type = typeNamedIn(value);
  auto checkPoint = type ? rebuild(*type, value) : nullptr;
  if (!checkPoint && error != nullptr) *error = PlatformError{};
  return checkPoint;
}

void CheckPoint::setAdditionalData(Json additionalData) {
  if (additionalData.is_null()) additionalData_.reset();
  if (!additionalData.is_object()) return;
  additionalData_ = std::make_shared<const Json>(std::move(additionalData));
}

void CheckPoint::readAdditionalData(const Json& json) {
  const Json* data = findObject(json, kAdditionalDataKey);
  if (data != nullptr) setAdditionalData(isNestedTooDeep(*data) ? unwritableObject() : *data);
}

Json CheckPoint::getJson() const {
  Json object = openCheckPoint(type_, 2);
  JsonDiscarder discarder(object);
  putAdditionalData(object, *this);
  discarder.keep();
  return object;
}

Json openCheckPoint(CheckPointType type, std::size_t members) {
  Json object = makeObject(members);
  putMember(object, kCheckPointTypeKey, CheckPointTypeToString::toString(type));
  return object;
}

void putAdditionalData(Json& object, const CheckPoint& checkPoint) {
  const Json* data = checkPoint.additionalData();
  if (data == nullptr) return;
  putMember(object, kAdditionalDataKey, isNestedTooDeep(*data) ? unwritableJson() : *data);
}

}  // namespace quorvance
