#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "quorvance/check_point_type.h"
#include "quorvance/json_exchange.h"
#include "quorvance/payment.h"
#include "quorvance/user.h"

#pragma GCC visibility push(default)

namespace quorvance {

struct TransactionFields;

/// What the library reads of a checkpoint, without a type of the JSON library. Hosts build, and
/// derive from, the classes behind it: CheckPoint and those of its kinds.
class CheckPointBase {
 public:
  virtual ~CheckPointBase();
  CheckPointBase(const CheckPointBase&) = delete;
  CheckPointBase& operator=(const CheckPointBase&) = delete;

  /// Decides the key under which the checkpoint is sent.
  CheckPointType type() const { return type_; }
  void setType(CheckPointType type) { type_ = type; }

  /// Gives one value, what is sent, on the thread of the manager's call; null when it gives none.
  virtual void writeJson(JsonSink& sink) const = 0;
  /// Who signs in by a login or a registration, which are told by their class, not by their type;
  /// null for any other checkpoint, and where the user is absent. Valid as long as the checkpoint.
  virtual const User* userSigningIn() const { return nullptr; }

 protected:
  explicit CheckPointBase(CheckPointType type) : type_(type) {}

 private:
  CheckPointType type_;
};

/// What the library writes and reads for the classes of checkpoints, which are compiled into the
/// host. A host needs none of it by name.
struct CheckPointContent {
  CheckPointType type{};
  /// Null when absent.
  const JsonSource* additionalData = nullptr;

  /// "checkpoint_type" and "additionalData".
  void write(JsonSink& sink) const;
  /// The same with a user, whose place depends on the type.
  void writeWithUser(JsonSink& sink, const std::shared_ptr<const User>& user) const;
  void writePaymentMethod(JsonSink& sink, const std::shared_ptr<const User>& user,
                          const std::shared_ptr<const Payment>& payment,
                          const std::shared_ptr<const Address>& billingAddress) const;
  void writeTransaction(JsonSink& sink, const TransactionFields& fields) const;

  /// Absent unless "checkpoint_type" is a text of the vocabulary.
  static std::optional<CheckPointType> readType(const JsonSource& json);
  // The record under the class's key; null unless an object stands there.
  static std::shared_ptr<const User> readUser(const JsonSource& json);
  static std::shared_ptr<const Payment> readPayment(const JsonSource& json);
  static std::shared_ptr<const Address> readBillingAddress(const JsonSource& json);
  static TransactionFields readTransaction(const JsonSource& json);
};

}  // namespace quorvance

#pragma GCC visibility pop
