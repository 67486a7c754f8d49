#include "device/snapshot_builders.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace quorvance {
namespace {

constexpr std::int64_t kBytesInMegabyte = std::int64_t{1} << 20;

constexpr std::array<std::string_view, 7> kOrientationNames = {
    "unknown",        "portrait", "portraitUpsideDown", "landscapeLeft",
    "landscapeRight", "faceUp",   "faceDown",
};

// In the order in which the technologies are compared.
constexpr std::array<std::pair<std::string_view, std::string_view>, 10> kRadioKinds = {{
    {"GPRS", "2G"},
    {"Edge", "2G"},
    {"CDMA1x", "2G"},
    {"WCDMA", "3G"},
    {"HSUPA", "3G"},
    {"CDMAEVDORev0", "3G"},
    {"CDMAEVDORevA", "3G"},
    {"CDMAEVDORevB", "3G"},
    {"eHRPD", "3G"},
    {"LTE", "4G"},
}};

// A metric that no integer holds is no metric.
std::optional<std::int64_t> truncated(const std::optional<double>& metric) {
  constexpr double kMostPixels = 1e9;
  if (!metric || !std::isfinite(*metric) || std::fabs(*metric) > kMostPixels) return std::nullopt;
  return static_cast<std::int64_t>(*metric);
}

std::optional<std::int64_t> megabytes(const std::optional<std::int64_t>& bytes) {
  if (!bytes) return std::nullopt;
  return *bytes / kBytesInMegabyte;
}

void fillFonts(DeviceData& data, const std::shared_ptr<const FontFacts>& fonts) {
  if (!fonts || (fonts->familyNames.empty() && fonts->fontsByFamily.empty())) return;
  std::int64_t count = 0;
  for (const auto& entry : fonts->fontsByFamily) count += std::ssize(entry.second);
  data.familyNames = {fonts, &fonts->familyNames};
  data.fontForName = {fonts, &fonts->fontsByFamily};
  data.fontCount = count;
}

void fillSystem(DeviceData& data, const SystemFacts& system) {
  data.iosVersion = system.systemVersion;
  data.deviceName = system.deviceName;
  data.deviceType = system.localizedModel;
  data.systemLocale = system.locale;
  if (system.userInterfaceIdiom) {
    data.userInterfaceIdiom = std::to_string(*system.userInterfaceIdiom);
  }
  data.defaultTimeZone = system.timeZone;
  data.ramSize = megabytes(system.memoryBytes);
  data.model = system.model;
  data.deviceCountry = system.region;
  data.language = system.language;
}

void fillDebugFields(DeviceData& data, const DeviceFacts& facts) {
  data.kindModel = facts.system.kindModel;
  data.isMultitaskingSupported = facts.system.isMultitaskingSupported;
  data.systemName = facts.system.systemName;
  if (const auto orientation = facts.posture.orientation) {
    data.isPortrait = *orientation == 1 || *orientation == 2;
    data.isLandscape = *orientation == 3 || *orientation == 4;
    data.isFlat = *orientation == 5 || *orientation == 6;
    data.orientation = orientationName(*orientation);
    data.isValidInterfaceOrientation = *orientation >= 1 && *orientation <= 4;
  }
  data.isBatteryMonitoringEnabled = facts.power.isMonitoringEnabled;
  data.batteryLevel = facts.power.battery.level;
  if (const auto state = facts.power.battery.state) data.batteryState = batteryStateName(*state);
  data.isProximityMonitoringEnabled = facts.posture.isProximityMonitoringEnabled;
  data.proximityState = facts.posture.proximityState;
  data.isGeneratingDeviceOrientationNotifications =
      facts.posture.isGeneratingOrientationNotifications;
}

}  // namespace

std::string_view networkKind(const std::optional<std::string>& radioTechnology) {
  const auto found = std::find_if(kRadioKinds.begin(), kRadioKinds.end(),
                                  [&](const auto& row) { return radioTechnology == row.first; });
  return found == kRadioKinds.end() ? "unreachable" : found->second;
}

std::string_view orientationName(int orientation) {
  if (orientation < 0 || orientation >= static_cast<int>(kOrientationNames.size())) {
    return kOrientationNames[0];
  }
  return kOrientationNames[static_cast<std::size_t>(orientation)];
}

std::string_view batteryStateName(int state) {
  switch (state) {
    case 1:
      return "unplugged";
    case 2:
      return "charging";
    case 3:
      return "full";
    default:
      return "unknown";
  }
}

DeviceData buildDeviceData(const SnapshotInputs& inputs) {
  DeviceData data;
  data.collectTime = inputs.now;
  data.uuid = inputs.vendorIdentifier;
  data.idfa = inputs.advertisingIdentifier;
  fillSystem(data, inputs.facts.system);
  // A file system that cannot be asked has size 0, by contract.
  data.storageSize = megabytes(inputs.facts.storage.totalBytes).value_or(0);
  data.screenWidth = truncated(inputs.facts.screen.logicalWidth);
  data.screenHeight = truncated(inputs.facts.screen.logicalHeight);
  data.xdpi = truncated(inputs.facts.screen.nativeWidth);
  data.ydpi = truncated(inputs.facts.screen.nativeHeight);
  fillFonts(data, inputs.facts.fonts);
  if (inputs.isInDebugMode) fillDebugFields(data, inputs.facts);
  return data;
}

SettingData buildSettingData(const SnapshotInputs& inputs) {
  const AccessibilityFacts& facts = inputs.facts.accessibility;
  SettingData data;
  data.collectTime = inputs.now;
  data.isEmulator = inputs.isEmulator;
  data.labelFontSize = facts.labelFontSize;
  data.buttonFontSize = facts.buttonFontSize;
  data.smallSystemFontSize = facts.smallSystemFontSize;
  data.isClosedCaptionDisplayEnabled = facts.isClosedCaptioningEnabled;
  data.isGuidedAccessEnabled = facts.isGuidedAccessEnabled;
  data.isInvertColorsEnabled = facts.isInvertColorsEnabled;
  data.isMonoAudioEnabled = facts.isMonoAudioEnabled;
  data.isVoiceOverRunning = facts.isScreenReaderRunning;
  data.inAppPurchase = false;
  const NetworkFacts& network = inputs.facts.network;
  const bool isWireless = network.isDefaultRouteWireless.value_or(false);
  data.internetConnectType = isWireless ? "wifi" : networkKind(network.radioTechnology);
  data.isJailbreak = false;
  data.installKeyboards = facts.installedKeyboards;
  return data;
}

SimData buildSimData(const SnapshotInputs& inputs) {
  const NetworkFacts& facts = inputs.facts.network;
  SimData data;
  data.collectTime = inputs.now;
  if (facts.isVoiceCapable) data.isVoiceCapable = *facts.isVoiceCapable ? "true" : "false";
  if (facts.mobileCountryCode && facts.mobileNetworkCode) {
    data.networkOperator = *facts.mobileCountryCode + *facts.mobileNetworkCode;
  }
  data.networkOperatorName = facts.carrierName;
  data.networkCountryIso = facts.carrierCountry;
  data.networkType = networkKind(facts.radioTechnology);
  return data;
}

}  // namespace quorvance
