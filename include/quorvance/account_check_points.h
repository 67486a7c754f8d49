#pragma once

// The account moments of a journey. A user is given whole, or shared; the constructors from a whole
// one are templates so that {} and nullptr still mean an absent user. Every `fromJson` reads the
// class's own keys, ignores values of another type, never fails and never looks at
// "checkpoint_type".

#include <concepts>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "quorvance/check_point.h"
#include "quorvance/user.h"

namespace quorvance {
inline namespace QUORVANCE_JSON_NAMESPACE {

/// The application started.
class Launch : public CheckPoint {
 public:
  /// The user identifier is discarded: a launch carries no user.
  explicit Launch(std::optional<std::string> /*userId*/ = std::nullopt)
      : CheckPoint(CheckPointType::LAUNCH) {}
  static std::unique_ptr<Launch> fromJson(const Json& json) { return rebuilt<Launch>(json); }
  Json getJson() const override {
    return contentOf(CheckPointType::LAUNCH,
                     [](const auto& content, JsonSink& sink) { content.write(sink); });
  }
};

/// Any moment without a class of its own.
class General : public CheckPoint {
 public:
  /// The user identifier is discarded: a general moment carries no user.
  explicit General(std::optional<std::string> /*userId*/ = std::nullopt)
      : CheckPoint(CheckPointType::GENERAL) {}
  static std::unique_ptr<General> fromJson(const Json& json) { return rebuilt<General>(json); }
  Json getJson() const override {
    return contentOf(CheckPointType::GENERAL,
                     [](const auto& content, JsonSink& sink) { content.write(sink); });
  }
};

/// A user registers. Its user identifier, when present, becomes the stored one.
class Register : public CheckPoint {
 public:
  /// An absent user is written as {}.
  explicit Register(std::shared_ptr<const User> user)
      : CheckPoint(CheckPointType::REGISTER), user_(std::move(user)) {}
  /// Register({.userId = "user-17"}).
  template <class Record = User>
  requires std::same_as<Record, User>
  explicit Register(Record user) : Register(std::make_shared<const User>(std::move(user))) {}
  static std::unique_ptr<Register> fromJson(const Json& json) {
    return rebuilt<Register>(json, CheckPointContent::readUser(jsonSource(json)));
  }
  Json getJson() const override {
    return contentOf(CheckPointType::REGISTER, [this](const auto& content, JsonSink& sink) {
      content.writeWithUser(sink, user_);
    });
  }
  const User* userSigningIn() const override { return user_.get(); }
  const std::shared_ptr<const User>& user() const { return user_; }

 private:
  std::shared_ptr<const User> user_;
};

/// A user logs in. Its user identifier, when present, becomes the stored one.
class Login : public CheckPoint {
 public:
  /// An absent user is written as {}.
  explicit Login(std::shared_ptr<const User> user)
      : CheckPoint(CheckPointType::LOGIN), user_(std::move(user)) {}
  /// Login({.userId = "user-17"}).
  template <class Record = User>
  requires std::same_as<Record, User>
  explicit Login(Record user) : Login(std::make_shared<const User>(std::move(user))) {}
  /// A new login that shares the other's user and nothing else.
  static std::unique_ptr<Login> withLogin(const Login& login) {
    return std::make_unique<Login>(login.user_);
  }
  static std::unique_ptr<Login> fromJson(const Json& json) {
    return rebuilt<Login>(json, CheckPointContent::readUser(jsonSource(json)));
  }
  Json getJson() const override {
    return contentOf(CheckPointType::LOGIN, [this](const auto& content, JsonSink& sink) {
      content.writeWithUser(sink, user_);
    });
  }
  const User* userSigningIn() const override { return user_.get(); }
  const std::shared_ptr<const User>& user() const { return user_; }

 private:
  std::shared_ptr<const User> user_;
};

/// A user changes what is known of them.
class UpdateUserInfo : public CheckPoint {
 public:
  /// An absent user is written as {}.
  explicit UpdateUserInfo(std::shared_ptr<const User> user)
      : CheckPoint(CheckPointType::UPDATE_USER_INFO), user_(std::move(user)) {}
  /// UpdateUserInfo({.userId = "user-17"}).
  template <class Record = User>
  requires std::same_as<Record, User>
  explicit UpdateUserInfo(Record user)
      : UpdateUserInfo(std::make_shared<const User>(std::move(user))) {}
  static std::unique_ptr<UpdateUserInfo> fromJson(const Json& json) {
    return rebuilt<UpdateUserInfo>(json, CheckPointContent::readUser(jsonSource(json)));
  }
  Json getJson() const override {
    return contentOf(CheckPointType::UPDATE_USER_INFO, [this](const auto& content, JsonSink& sink) {
      content.writeWithUser(sink, user_);
    });
  }
  const std::shared_ptr<const User>& user() const { return user_; }

 private:
  std::shared_ptr<const User> user_;
};

/// A user changes their password.
class PasswordChange : public CheckPoint {
 public:
  /// An absent user is written as {}.
  explicit PasswordChange(std::shared_ptr<const User> user)
      : CheckPoint(CheckPointType::PASSWORD_CHANGE), user_(std::move(user)) {}
  /// PasswordChange({.userId = "user-17"}).
  template <class Record = User>
  requires std::same_as<Record, User>
  explicit PasswordChange(Record user)
      : PasswordChange(std::make_shared<const User>(std::move(user))) {}
  static std::unique_ptr<PasswordChange> fromJson(const Json& json) {
    return rebuilt<PasswordChange>(json, CheckPointContent::readUser(jsonSource(json)));
  }
  Json getJson() const override {
    return contentOf(CheckPointType::PASSWORD_CHANGE, [this](const auto& content, JsonSink& sink) {
      content.writeWithUser(sink, user_);
    });
  }
  const std::shared_ptr<const User>& user() const { return user_; }

 private:
  std::shared_ptr<const User> user_;
};

}  // namespace QUORVANCE_JSON_NAMESPACE
}  // namespace quorvance
