#pragma once

// What the platform knows of the device, by groups that are read and may fail apart. Every absent
// field means "unknown" and its key is then left out of what is sent. Sources are read on the fact
// lane of the background queue, never inside a host call, so they may wait for files and buses.

#include "quorvance/standard_library.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#pragma GCC visibility push(default)

namespace quorvance {

/// Hardware, operating system, locale.
struct SystemFacts {
  /// Version of the operating system ("12").
  std::optional<std::string> systemVersion;
  /// Name of the operating system ("Debian GNU/Linux").
  std::optional<std::string> systemName;
  /// Hardware model identifier.
  std::optional<std::string> model;
  /// Generic model name: what kind of device it is ("desktop", "tablet", "handset").
  std::optional<std::string> kindModel;
  /// The same in the user's language.
  std::optional<std::string> localizedModel;
  /// The name that the user gave to the device.
  std::optional<std::string> deviceName;
  /// Interface idiom number.
  std::optional<std::int64_t> userInterfaceIdiom;
  /// Locale identifier ("de_DE").
  std::optional<std::string> locale;
  /// Region code of the locale (ISO 3166-1 alpha-2).
  std::optional<std::string> region;
  /// Language code of the first preferred language (ISO 639).
  std::optional<std::string> language;
  /// IANA time zone identifier.
  std::optional<std::string> timeZone;
  /// Physical memory, in bytes.
  std::optional<std::int64_t> memoryBytes;
  std::optional<bool> isMultitaskingSupported;
};

/// Apart from the system's facts, since a home on a network's disk may hang.
struct StorageFacts {
  /// Size of the file system of the home directory, in bytes.
  std::optional<std::int64_t> totalBytes;
};

/// The main screen: logical units and native pixels.
struct ScreenFacts {
  std::optional<double> logicalWidth;
  std::optional<double> logicalHeight;
  std::optional<double> nativeWidth;
  std::optional<double> nativeHeight;
};

/// How the device is held. Read in debug mode only.
struct PostureFacts {
  /// 0 unknown, 1 portrait, 2 portrait upside down, 3 landscape left, 4 landscape right, 5 face up,
  /// 6 face down.
  std::optional<int> orientation;
  std::optional<bool> isGeneratingOrientationNotifications;
  std::optional<bool> isProximityMonitoringEnabled;
  std::optional<bool> proximityState;
};

/// Installed fonts.
struct FontFacts {
  std::vector<std::string> familyNames;
  std::map<std::string, std::vector<std::string>> fontsByFamily;
};

/// What a battery tells while it is monitored.
struct BatteryReading {
  /// 0.0 to 1.0.
  std::optional<float> level;
  /// 1 unplugged, 2 charging, 3 full, anything else unknown.
  std::optional<int> state;
};

/// The battery. Read in debug mode only.
struct PowerFacts {
  /// The switch as it was found.
  std::optional<bool> isMonitoringEnabled;
  BatteryReading battery;
};

/// Settings of the user interface.
struct AccessibilityFacts {
  /// Sizes in points.
  std::optional<float> labelFontSize;
  std::optional<float> buttonFontSize;
  std::optional<float> smallSystemFontSize;
  std::optional<bool> isClosedCaptioningEnabled;
  std::optional<bool> isGuidedAccessEnabled;
  std::optional<bool> isInvertColorsEnabled;
  std::optional<bool> isMonoAudioEnabled;
  std::optional<bool> isScreenReaderRunning;
  std::vector<std::string> installedKeyboards;
};

/// The cellular modem and the default route.
struct NetworkFacts {
  /// "GPRS", "Edge", "CDMA1x", "WCDMA", "HSDPA", "HSUPA", "CDMAEVDORev0", "CDMAEVDORevA",
  /// "CDMAEVDORevB", "eHRPD", "LTE" or another name.
  std::optional<std::string> radioTechnology;
  std::optional<bool> isDefaultRouteWireless;
  std::optional<bool> isVoiceCapable;
  std::optional<std::string> mobileCountryCode;
  std::optional<std::string> mobileNetworkCode;
  std::optional<std::string> carrierName;
  /// ISO 3166-1 alpha-2.
  std::optional<std::string> carrierCountry;
};

/// One group of facts. Called on the fact lane, one call at a time; throws nothing.
template <class Facts>
class FactSource {
 public:
  virtual ~FactSource() = default;
  virtual Facts read() = 0;
  /// Where the member of that name comes from, for people who review what is collected.
  virtual std::string origin(std::string_view field) const {
    static_cast<void>(field);
    return "the application's own source";
  }
};

/// The battery, which tells its state only while it is monitored. Called as a FactSource is.
class PowerSource {
 public:
  virtual ~PowerSource() = default;
  /// Absent where the platform has no such switch; then it is never set.
  virtual std::optional<bool> isMonitoringEnabled() = 0;
  virtual void setMonitoringEnabled(bool on) = 0;
  virtual BatteryReading read() = 0;
  virtual std::string origin(std::string_view field) const {
    static_cast<void>(field);
    return "the application's own source";
  }
};

}  // namespace quorvance

#pragma GCC visibility pop
