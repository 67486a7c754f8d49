#pragma once

#include <optional>
#include <string>

#include "base/json.h"
#include "quorvance/check_point_type.h"

namespace quorvance {

/// The outcome of a checkpoint that the host acted on.
struct TransactionUpdate {
  /// Of the verdict that the outcome belongs to.
  std::string requestID;
  std::optional<std::string> transactionID;
  CheckPointStatus status = CheckPointStatus::CANCELLED;

  Json getJson() const;
};

}  // namespace quorvance
