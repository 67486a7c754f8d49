#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "quorvance/platform/platform.h"

namespace quorvance {

/// What is read in one go.
enum class FactGroup {
  fixed,
  identity,
  system,
  storage,
  screen,
  fonts,
  posture,
  power,
  accessibility,
  network,
  permissions,
};
inline constexpr std::size_t kFactGroups = 11;

inline constexpr std::string_view kDeviceRecord = "device_data";
inline constexpr std::string_view kSettingsRecord = "settings_data";
inline constexpr std::string_view kSimRecord = "sim_data";

/// Where one field of the three snapshots comes from.
struct FieldOrigin {
  std::string_view record;
  std::string_view key;
  FactGroup group;
  /// The member of the group; for FactGroup::fixed what the value is.
  std::string_view member;
  std::string_view governedBy;
};

/// Every field, in the order of the records and of their keys.
std::span<const FieldOrigin> inspectedFields();

/// As the source itself says it, and what stands in for it.
std::string sourceOf(const FieldOrigin& field, const Platform& platform);

}  // namespace quorvance
