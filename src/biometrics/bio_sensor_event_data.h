#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "base/json.h"
#include "biometrics/motion_row.h"
#include "biometrics/touch_event.h"
#include "quorvance/screen_listener_type.h"

namespace quorvance {

/// What a screen recorded, as it is sent. Absent lists are left out, empty ones are not.
struct BioSensorEventData {
  /// The time of a touch sample in milliseconds since 1970, and the tag of the view under it.
  using TouchTime = std::array<std::int64_t, 2>;

  std::optional<bool> fraudster{};
  ScreenListenerType actionType{};
  std::optional<std::int64_t> actionId{};
  std::optional<std::vector<TouchRow>> eventList{};
  /// Only of touches on a view: shorter than the list of touches when some were not.
  std::optional<std::vector<TouchTime>> eventListTS{};
  std::optional<std::vector<MotionRow>> sensorsData{};
  /// Milliseconds since 1970, one for each motion row.
  std::optional<std::vector<std::int64_t>> sensorsTS{};

  Json getJson() const;
};

}  // namespace quorvance
