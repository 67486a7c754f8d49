#pragma once

#include <optional>
#include <string>

#include "network/responce_object.h"
#include "quorvance/platform/http.h"
#include "quorvance/platform_error.h"

namespace quorvance {

/// What a reply means and which side effects it asks for.
struct CallOutcome {
  ResponceObject response;
  /// Whether a communication-error report is due (unless the call asked for none).
  bool isCommunicationError = false;
  /// The error of that report; absent when a status or a body is to blame.
  std::optional<PlatformError> transportError;
  /// For the exception logger.
  std::optional<PlatformError> parseError;
  /// A transport error is not printed.
  bool isPrinted = true;
};

/// The whole rule from (transport error, status, body) to an outcome; first match wins.
CallOutcome decideOutcome(HttpReply reply, std::string requestId, std::string url);

}  // namespace quorvance
