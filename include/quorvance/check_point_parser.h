#pragma once

// CheckPoint::parse; included by quorvance/check_point.h, with every class that it makes.

#include "quorvance/account_check_points.h"
#include "quorvance/add_payment_method.h"
#include "quorvance/check_point.h"
#include "quorvance/transaction.h"

namespace quorvance {
inline namespace QUORVANCE_JSON_NAMESPACE {

// Where one of their headers was included first, the classes are still to come.
class Launch;
class Register;
class Login;
class Transaction;
class AddPaymentMethod;
class General;

template <class Class, class Value>
std::unique_ptr<CheckPoint> rebuiltAs(const Value& value) {
  return Class::fromJson(value);
}

template <class Value>
std::unique_ptr<CheckPoint> rebuiltCheckPoint(const Value& value) {
  switch (CheckPointContent::readType(jsonSource(value)).value_or(CheckPointType::NONE)) {
    case CheckPointType::LAUNCH:
      return rebuiltAs<Launch>(value);
    case CheckPointType::REGISTER:
      return rebuiltAs<Register>(value);
    case CheckPointType::LOGIN:
      return rebuiltAs<Login>(value);
    case CheckPointType::TRANSACTION:
      return rebuiltAs<Transaction>(value);
    case CheckPointType::ADD_PAYMENT_METHOD:
      return rebuiltAs<AddPaymentMethod>(value);
    case CheckPointType::GENERAL:
      return rebuiltAs<General>(value);
    // Two of these have a class and are still not rebuilt: that gap is intended.
    case CheckPointType::UPDATE_DETAILS:
    case CheckPointType::UPDATE_USER_INFO:
    case CheckPointType::PASSWORD_CHANGE:
    case CheckPointType::NONE:
      break;
  }
  return nullptr;
}

template <class Value>
std::unique_ptr<CheckPoint> CheckPoint::parse(const std::type_identity_t<Value>& value,
                                              PlatformError* error) {
  auto checkPoint = rebuiltCheckPoint<Value>(value);
  if (!checkPoint && error != nullptr) *error = PlatformError{};
  return checkPoint;
}

}  // namespace QUORVANCE_JSON_NAMESPACE
}  // namespace quorvance
