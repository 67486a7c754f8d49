#pragma once

#include <memory>

#include "quorvance/platform/device_facts.h"
#include "quorvance/platform/platform.h"
#include "state/system_texts.h"

namespace quorvance {

/// What was read of the device.
struct DeviceFacts {
  SystemFacts system{};
  StorageFacts storage{};
  ScreenFacts screen{};
  /// Null until they have been read: they are large, and a copy of these facts shares them.
  std::shared_ptr<const FontFacts> fonts{};
  PostureFacts posture{};
  PowerFacts power{};
  AccessibilityFacts accessibility{};
  NetworkFacts network{};
};

/// The generic model name of a device that tells none: the server always gets one.
inline constexpr std::string_view kUnknownKindModel = "computer";

// Each asks one source, which may be null and then tells nothing. Text that nobody can read counts
// as absent, whoever told it. Fact lane only.
SystemFacts readSystem(const DeviceFactSources& sources, const SystemTexts& texts);
StorageFacts readStorage(const DeviceFactSources& sources);
ScreenFacts readScreen(const DeviceFactSources& sources);
FontFacts readFonts(const DeviceFactSources& sources);
PostureFacts readPosture(const DeviceFactSources& sources);
/// Switches monitoring on for the reading and leaves the switch as it was found.
PowerFacts readPower(const DeviceFactSources& sources);
AccessibilityFacts readAccessibility(const DeviceFactSources& sources);
NetworkFacts readNetwork(const DeviceFactSources& sources);

/// The system facts as they are told: the simulator's variable names the model over every source,
/// uname(2) names it where no source does, and the generic model name is never absent.
SystemFacts completed(SystemFacts facts, const SystemTexts& texts);

}  // namespace quorvance
