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

#pragma GCC visibility push(default)

namespace quorvance {

/// The application started.
class Launch : public CheckPoint {
 public:
  /// The user identifier is discarded: a launch carries no user.
  explicit Launch(std::optional<std::string> userId = std::nullopt);
  static std::unique_ptr<Launch> fromJson(const Json& json);
  Json getJson() const override;
};

/// Any moment without a class of its own.
class General : public CheckPoint {
 public:
  /// The user identifier is discarded: a general moment carries no user.
  explicit General(std::optional<std::string> userId = std::nullopt);
  static std::unique_ptr<General> fromJson(const Json& json);
  Json getJson() const override;
};

/// A user registers. Its user identifier, when present, becomes the stored one.
class Register : public CheckPoint {
 public:
  /// An absent user is written as {}.
  explicit Register(std::shared_ptr<const User> user);
  /// Register({.userId = "user-17"}).
  template <class Record = User>
  requires std::same_as<Record, User>
  explicit Register(Record user) : Register(std::make_shared<const User>(std::move(user))) {}
  static std::unique_ptr<Register> fromJson(const Json& json);
  Json getJson() const override;
  const std::shared_ptr<const User>& user() const { return user_; }

 private:
  std::shared_ptr<const User> user_;
};

/// A user logs in. Its user identifier, when present, becomes the stored one.
class Login : public CheckPoint {
 public:
  /// An absent user is written as {}.
  explicit Login(std::shared_ptr<const User> user);
  /// Login({.userId = "user-17"}).
  template <class Record = User>
  requires std::same_as<Record, User>
  explicit Login(Record user) : Login(std::make_shared<const User>(std::move(user))) {}
  /// A new login that shares the other's user and nothing else.
  static std::unique_ptr<Login> withLogin(const Login& login);
  static std::unique_ptr<Login> fromJson(const Json& json);
  Json getJson() const override;
  const std::shared_ptr<const User>& user() const { return user_; }

 private:
  std::shared_ptr<const User> user_;
};

/// A user changes what is known of them.
class UpdateUserInfo : public CheckPoint {
 public:
  /// An absent user is written as {}.
  explicit UpdateUserInfo(std::shared_ptr<const User> user);
  /// UpdateUserInfo({.userId = "user-17"}).
  template <class Record = User>
  requires std::same_as<Record, User>
  explicit UpdateUserInfo(Record user)
      : UpdateUserInfo(std::make_shared<const User>(std::move(user))) {}
  static std::unique_ptr<UpdateUserInfo> fromJson(const Json& json);
  Json getJson() const override;
  const std::shared_ptr<const User>& user() const { return user_; }

 private:
  std::shared_ptr<const User> user_;
};

/// A user changes their password.
class PasswordChange : public CheckPoint {
 public:
  /// An absent user is written as {}.
  explicit PasswordChange(std::shared_ptr<const User> user);
  /// PasswordChange({.userId = "user-17"}).
  template <class Record = User>
  requires std::same_as<Record, User>
  explicit PasswordChange(Record user)
      : PasswordChange(std::make_shared<const User>(std::move(user))) {}
  static std::unique_ptr<PasswordChange> fromJson(const Json& json);
  Json getJson() const override;
  const std::shared_ptr<const User>& user() const { return user_; }

 private:
  std::shared_ptr<const User> user_;
};

}  // namespace quorvance

#pragma GCC visibility pop
