#pragma once

#include "quorvance/standard_library.h"

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <system_error>

#pragma GCC visibility push(default)

namespace quorvance {

/// An error as the platform reports it: who says so, which one, in words, and why.
struct PlatformError {
  std::string domain;
  std::int64_t code = 0;
  std::string description;
  /// Absent when the platform gives no reason of its own.
  std::optional<std::string> failureReason;

  /// Domain = the category's name, description = its message for the code.
  static PlatformError fromErrorCode(const std::error_code& error);
  /// As above, with the exception's own text as the reason.
  static PlatformError fromSystemError(const std::system_error& error);

  /// "domain code: description", with " (reason)" when there is one.
  std::string text() const;

  friend bool operator==(const PlatformError&, const PlatformError&) = default;
};

}  // namespace quorvance

#pragma GCC visibility pop
