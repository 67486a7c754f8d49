#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/json.h"
#include "quorvance/screen_listener_type.h"

namespace quorvance {

/// A span of time that the user spent on a screen, or in the application at its start. Absent
/// fields are left out.
struct ActivityMap {
  /// The host's identifier of the screen.
  std::optional<std::string> screenId{};
  std::optional<std::string> userId{};
  std::optional<std::string> appID{};
  std::optional<std::string> appVer{};
  std::optional<std::string> deviceId{};
  std::optional<std::string> sessionId{};
  /// Milliseconds since 1970.
  std::optional<std::int64_t> timestampStart{};
  std::optional<std::int64_t> timestampEnd{};
  std::optional<ScreenListenerType> screenType{};

  Json getJson() const;
  /// The record of the application's start: "startApp" stands where a screen's type would.
  Json startAppJson() const;
};

}  // namespace quorvance
