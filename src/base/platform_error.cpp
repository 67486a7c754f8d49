#include "quorvance/platform_error.h"

namespace quorvance {

PlatformError PlatformError::fromErrorCode(const std::error_code& error) {
  return {error.category().name(), error.value(), error.message(), std::nullopt};
}

PlatformError PlatformError::fromSystemError(const std::system_error& error) {
  PlatformError result = fromErrorCode(error.code());
  result.failureReason = error.what();
  return result;
}

std::string PlatformError::text() const {
  std::string result = domain + " " + std::to_string(code) + ": " + description;
  if (failureReason) result += " (" + *failureReason + ")";
  return result;
}

}  // namespace quorvance
