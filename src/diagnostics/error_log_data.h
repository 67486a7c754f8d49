#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/json.h"
#include "state/system_texts.h"

namespace quorvance {

/// One fault as a flat record: a communication error, a crash, an exception. Absent fields are left
/// out.
struct ErrorLogData {
  std::optional<std::string> errorStack{};
  /// Of the operating system.
  std::optional<std::string> version{};
  std::optional<std::string> deviceModel{};
  std::optional<std::string> sdkVersion{};
  std::optional<std::string> cause{};
  std::optional<std::string> errorType{};
  std::optional<std::int64_t> errorCode{};
  /// Milliseconds since 1970; spelled as its key is.
  std::optional<std::int64_t> error_timestamp{};

  Json getJson() const;

  /// A record with the version texts, as far as they are known, and the time.
  static ErrorLogData stamped(const SystemTexts& texts, std::int64_t now);
  /// With the system's version, which is read when it is not known: not for a thread of the host's.
  Json completeJson(SystemTexts& texts) const;
};

}  // namespace quorvance
