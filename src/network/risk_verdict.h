#pragma once

#include <string>

#include "network/responce_object.h"
#include "quorvance/risk.h"
#include "quorvance/verdict.h"

namespace quorvance {

/// A verdict as the server's reply tells it.
struct RiskVerdict {
  Risk risk;
  /// The server's signature over the verdict; "-1" when there is none.
  std::string signedRisk;
  std::string requestId;
  /// The reply told the level.
  bool hasLevel = false;
};

/// The level is "undefined" unless the reply holds an integer of the vocabulary under "risk".
RiskVerdict readVerdict(const ResponceObject& response);

/// Why the call has no answer; `answered` when it succeeded.
VerdictReason reasonOf(const ResponceObject& response);

/// The verdict of a call that was never answered.
RiskVerdict answerlessVerdict(std::string requestId);

}  // namespace quorvance
