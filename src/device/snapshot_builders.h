#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "device/device_data.h"
#include "device/device_facts_cache.h"
#include "quorvance/platform/environment.h"
#include "quorvance/platform/identity.h"

namespace quorvance {

/// What a snapshot is built from.
struct SnapshotInputs {
  const DeviceFacts& facts;
  std::optional<std::string> vendorIdentifier;
  std::optional<std::string> advertisingIdentifier;
  /// Milliseconds since 1970.
  std::int64_t now = 0;
  /// Orientation, battery and proximity are told in debug mode only.
  bool isInDebugMode = false;
  bool isEmulator = false;
};

DeviceData buildDeviceData(const SnapshotInputs& inputs);
SettingData buildSettingData(const SnapshotInputs& inputs);
SimData buildSimData(const SnapshotInputs& inputs);

/// "2G", "3G", "4G" or "unreachable". HSDPA is not in the list and stays out of it.
std::string_view networkKind(const std::optional<std::string>& radioTechnology);

/// 0 to 6; "unknown" for any other number.
std::string_view orientationName(int orientation);
/// 1 "unplugged", 2 "charging", 3 "full", any other number "unknown".
std::string_view batteryStateName(int state);

}  // namespace quorvance
