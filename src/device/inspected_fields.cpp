#include "device/inspected_fields.h"

#include <memory>

namespace quorvance {
namespace {

constexpr std::string_view kSession = "each session";
constexpr std::string_view kAlsoConfiguration = "each session, configuration request";
constexpr std::string_view kAlsoIdentifier = "each session, device identifier request";
constexpr std::string_view kDebug = "debug mode";
constexpr std::string_view kVendorIdentifier = "vendorIdentifier";
constexpr std::string_view kNever = "never sent";

using Group = FactGroup;

constexpr FieldOrigin kFields[] = {
    {kDeviceRecord, "collectTime", Group::fixed, "the clock", kAlsoIdentifier},
    {kDeviceRecord, "uuid", Group::identity, kVendorIdentifier, kAlsoIdentifier},
    {kDeviceRecord, "iosVersion", Group::system, "systemVersion", kAlsoConfiguration},
    {kDeviceRecord, "deviceName", Group::system, "deviceName", kSession},
    {kDeviceRecord, "deviceType", Group::system, "localizedModel", kSession},
    {kDeviceRecord, "systemLocale", Group::system, "locale", kSession},
    {kDeviceRecord, "userInterfaceIdiom", Group::system, "userInterfaceIdiom", kSession},
    {kDeviceRecord, "defaultTimeZone", Group::system, "timeZone", kSession},
    {kDeviceRecord, "storageSize", Group::storage, "totalBytes", kSession},
    {kDeviceRecord, "ramSize", Group::system, "memoryBytes", kSession},
    {kDeviceRecord, "screenWidth", Group::screen, "logicalWidth", kSession},
    {kDeviceRecord, "screenHeight", Group::screen, "logicalHeight", kSession},
    {kDeviceRecord, "xdpi", Group::screen, "nativeWidth", kSession},
    {kDeviceRecord, "ydpi", Group::screen, "nativeHeight", kSession},
    {kDeviceRecord, "model", Group::system, "model", kAlsoConfiguration},
    {kDeviceRecord, "familyNames", Group::fonts, "familyNames", kSession},
    {kDeviceRecord, "fontForName", Group::fonts, "fontsByFamily", kSession},
    {kDeviceRecord, "fontCount", Group::fonts, "fontsByFamily", kSession},
    {kDeviceRecord, "idfa", Group::identity, "the platform, if it has any", "advertising tracking"},
    {kDeviceRecord, "deviceCountry", Group::system, "region", kSession},
    {kDeviceRecord, "kindModel", Group::system, "kindModel", "debug mode; configuration request"},
    {kDeviceRecord, "isMultitaskingSupported", Group::system, "isMultitaskingSupported", kDebug},
    {kDeviceRecord, "systemName", Group::system, "systemName", kDebug},
    {kDeviceRecord, "isPortrait", Group::posture, "orientation", kDebug},
    {kDeviceRecord, "isLandscape", Group::posture, "orientation", kDebug},
    {kDeviceRecord, "isFlat", Group::posture, "orientation", kDebug},
    {kDeviceRecord, "orientation", Group::posture, "orientation", kDebug},
    {kDeviceRecord, "language", Group::system, "language", kSession},
    {kDeviceRecord, "isValidInterfaceOrientation", Group::posture, "orientation", kDebug},
    {kDeviceRecord, "isBatteryMonitoringEnabled", Group::power, "isMonitoringEnabled", kDebug},
    {kDeviceRecord, "batteryLevel", Group::power, "level", kDebug},
    {kDeviceRecord, "batteryState", Group::power, "state", kDebug},
    {kDeviceRecord, "isProximityMonitoringEnabled", Group::posture, "isProximityMonitoringEnabled",
     kDebug},
    {kDeviceRecord, "proximityState", Group::posture, "proximityState", kDebug},
    {kDeviceRecord, "isGeneratingDeviceOrientationNotifications", Group::posture,
     "isGeneratingOrientationNotifications", kDebug},

    {kSettingsRecord, "collectTime", Group::fixed, "the clock", kSession},
    {kSettingsRecord, "isEmulator", Group::fixed, "SIMULATOR_MODEL_IDENTIFIER is set", kSession},
    {kSettingsRecord, "labelFontSize", Group::accessibility, "labelFontSize", kSession},
    {kSettingsRecord, "buttonFontSize", Group::accessibility, "buttonFontSize", kSession},
    {kSettingsRecord, "smallSystemFontSize", Group::accessibility, "smallSystemFontSize", kSession},
    {kSettingsRecord, "isClosedCaptionDisplayEnabled", Group::accessibility,
     "isClosedCaptioningEnabled", kSession},
    {kSettingsRecord, "isGuidedAccessEnabled", Group::accessibility, "isGuidedAccessEnabled",
     kSession},
    {kSettingsRecord, "isInvertColorsEnabled", Group::accessibility, "isInvertColorsEnabled",
     kSession},
    {kSettingsRecord, "isMonoAudioEnabled", Group::accessibility, "isMonoAudioEnabled", kSession},
    {kSettingsRecord, "isVoiceOverRunning", Group::accessibility, "isScreenReaderRunning",
     kSession},
    {kSettingsRecord, "inAppPurchase", Group::fixed, "always false", kSession},
    {kSettingsRecord, "internetConnectType", Group::network, "isDefaultRouteWireless", kSession},
    {kSettingsRecord, "isJailbreak", Group::fixed, "always false", kSession},
    {kSettingsRecord, "installKeyboards", Group::accessibility, "installedKeyboards", kNever},

    {kSimRecord, "collectTime", Group::fixed, "the clock", kSession},
    {kSimRecord, "isVoiceCapable", Group::network, "isVoiceCapable", kSession},
    {kSimRecord, "networkOperator", Group::network, "mobileNetworkCode", kSession},
    {kSimRecord, "networkOperatorName", Group::network, "carrierName", kSession},
    {kSimRecord, "networkCountryIso", Group::network, "carrierCountry", kSession},
    {kSimRecord, "networkType", Group::network, "radioTechnology", kSession},
};

template <class Source>
std::string originOf(const std::shared_ptr<Source>& source, std::string_view member) {
  return source ? source->origin(member) : "no source";
}

std::string groupOrigin(const FieldOrigin& field, const Platform& platform) {
  const DeviceFactSources& sources = platform.facts;
  switch (field.group) {
    case FactGroup::system:
      return originOf(sources.system, field.member);
    case FactGroup::storage:
      return originOf(sources.storage, field.member);
    case FactGroup::screen:
      return originOf(sources.screen, field.member);
    case FactGroup::fonts:
      return originOf(sources.fonts, field.member);
    case FactGroup::posture:
      return originOf(sources.posture, field.member);
    case FactGroup::power:
      return originOf(sources.power, field.member);
    case FactGroup::accessibility:
      return originOf(sources.accessibility, field.member);
    case FactGroup::network:
      return originOf(sources.network, field.member);
    case FactGroup::identity:
      if (field.member != kVendorIdentifier) break;
      return platform.identity ? platform.identity->origin() : "no source";
    case FactGroup::fixed:
    case FactGroup::permissions:
      break;
  }
  return std::string(field.member);
}

}  // namespace

std::span<const FieldOrigin> inspectedFields() { return kFields; }

std::string sourceOf(const FieldOrigin& field, const Platform& platform) {
  std::string origin = groupOrigin(field, platform);
  if (field.key == "model") return "SIMULATOR_MODEL_IDENTIFIER, " + origin;
  if (field.key == "kindModel") return origin + ", else \"computer\"";
  if (field.key == "storageSize") return origin + ", else 0";
  if (field.key == "internetConnectType") {
    return origin + "; unless that is wireless, " +
           originOf(platform.facts.network, "radioTechnology");
  }
  return origin;
}

}  // namespace quorvance
