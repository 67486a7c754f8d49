#pragma once

#include <memory>
#include <string>

#include "quorvance/check_point.h"
#include "quorvance/payment.h"
#include "quorvance/user.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// A user adds a payment instrument. Absent records are written as {}.
class AddPaymentMethod : public CheckPoint {
 public:
  AddPaymentMethod(std::shared_ptr<const User> user, std::shared_ptr<const Payment> payment,
                   std::shared_ptr<const Address> billingAddress);
  /// A user of whom only the identifier is known, and a card of which only the token is.
  AddPaymentMethod(std::string userId, std::string paymentMethodToken);

  /// Never fails: a key of another type is ignored, "checkpoint_type" is not read.
  static std::unique_ptr<AddPaymentMethod> fromJson(const Json& json);
  Json getJson() const override;

  const std::shared_ptr<const User>& user() const { return user_; }
  const std::shared_ptr<const Payment>& payment() const { return payment_; }
  const std::shared_ptr<const Address>& billingAddress() const { return billingAddress_; }

 private:
  std::shared_ptr<const User> user_;
  std::shared_ptr<const Payment> payment_;
  std::shared_ptr<const Address> billingAddress_;
};

}  // namespace quorvance

#pragma GCC visibility pop
