#include "quorvance/account_check_points.h"

#include <utility>

#include "model/check_point_json.h"

namespace quorvance {
namespace {

Json userlessJson(const CheckPoint& checkPoint, CheckPointType fixedType) {
  Json object = openCheckPoint(fixedType, 2);
  JsonDiscarder discarder(object);
  putAdditionalData(object, checkPoint);
  discarder.keep();
  return object;
}

Json userJson(const CheckPoint& checkPoint, CheckPointType fixedType,
              const std::shared_ptr<const User>& user) {
  Json object = openCheckPoint(fixedType, 3);
  JsonDiscarder discarder(object);
  putRecordOrEmpty(object, kUserKey, user);
  putAdditionalData(object, checkPoint);
  discarder.keep();
  return object;
}

}  // namespace

Launch::Launch(std::optional<std::string> /*userId*/) : CheckPoint(CheckPointType::LAUNCH) {}

std::unique_ptr<Launch> Launch::fromJson(const Json& json) {
  auto launch = std::make_unique<Launch>();
  launch->readAdditionalData(json);
  return launch;
}

Json Launch::getJson() const { return userlessJson(*this, CheckPointType::LAUNCH); }

General::General(std::optional<std::string> /*userId*/) : CheckPoint(CheckPointType::GENERAL) {}

std::unique_ptr<General> General::fromJson(const Json& json) {
  auto general = std::make_unique<General>();
  general->readAdditionalData(json);
  return general;
}

Json General::getJson() const { return userlessJson(*this, CheckPointType::GENERAL); }

Register::Register(std::shared_ptr<const User> user)
    : CheckPoint(CheckPointType::REGISTER), user_(std::move(user)) {}

std::unique_ptr<Register> Register::fromJson(const Json& json) {
  auto registration = std::make_unique<Register>(findRecord<User>(json, kUserKey));
  registration->readAdditionalData(json);
  return registration;
}

// A registration alone writes "additionalData" before its user.
Json Register::getJson() const {
  Json object = openCheckPoint(CheckPointType::REGISTER, 3);
  JsonDiscarder discarder(object);
  putAdditionalData(object, *this);
  putRecordOrEmpty(object, kUserKey, user_);
  discarder.keep();
  return object;
}

Login::Login(std::shared_ptr<const User> user)
    : CheckPoint(CheckPointType::LOGIN), user_(std::move(user)) {}

std::unique_ptr<Login> Login::withLogin(const Login& login) {
  return std::make_unique<Login>(login.user_);
}

std::unique_ptr<Login> Login::fromJson(const Json& json) {
  auto login = std::make_unique<Login>(findRecord<User>(json, kUserKey));
  login->readAdditionalData(json);
  return login;
}

Json Login::getJson() const { return userJson(*this, CheckPointType::LOGIN, user_); }

UpdateUserInfo::UpdateUserInfo(std::shared_ptr<const User> user)
    : CheckPoint(CheckPointType::UPDATE_USER_INFO), user_(std::move(user)) {}

std::unique_ptr<UpdateUserInfo> UpdateUserInfo::fromJson(const Json& json) {
  auto update = std::make_unique<UpdateUserInfo>(findRecord<User>(json, kUserKey));
  update->readAdditionalData(json);
  return update;
}

Json UpdateUserInfo::getJson() const {
  return userJson(*this, CheckPointType::UPDATE_USER_INFO, user_);
}

PasswordChange::PasswordChange(std::shared_ptr<const User> user)
    : CheckPoint(CheckPointType::PASSWORD_CHANGE), user_(std::move(user)) {}

std::unique_ptr<PasswordChange> PasswordChange::fromJson(const Json& json) {
  auto change = std::make_unique<PasswordChange>(findRecord<User>(json, kUserKey));
  change->readAdditionalData(json);
  return change;
}

Json PasswordChange::getJson() const {
  return userJson(*this, CheckPointType::PASSWORD_CHANGE, user_);
}

}  // namespace quorvance
