#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/json.h"
#include "quorvance/mobile_permission.h"
#include "quorvance/platform/authorization.h"

namespace quorvance {

/// Which permissions are granted, refused and asked for, and where the device is.
struct CheckPointAdditionalData {
  /// Milliseconds since 1970.
  std::optional<std::int64_t> collectTime{};
  std::optional<LocationFix> location{};
  std::vector<MobilePermission> permissions{};
  std::vector<MobilePermission> ignorePermissions{};
  /// Its key is "askedPermissions".
  std::vector<MobilePermission> askPermissions{};

  /// The three lists are always written, empty or not.
  Json getJson() const;
};

}  // namespace quorvance
