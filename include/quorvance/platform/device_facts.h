#pragma once

// What the platform knows of the device, by groups that are read and may fail apart. Every absent
// field means "unknown" and its key is then left out of what is sent. Sources are read on the fact
// lane of the background queue, never inside a host call, so they may wait for files and buses.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
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
  /// Size of the file system of the home directory, in bytes.
  std::optional<std::int64_t> storageBytes;
  /// Physical memory, in bytes.
  std::optional<std::int64_t> memoryBytes;
  std::optional<bool> isMultitaskingSupported;
};

/// The main screen: logical units and native pixels.
struct ScreenFacts {
  std::optional<double> logicalWidth;
  std::optional<double> logicalHeight;
  std::optional<double> nativeWidth;
  std::optional<double> nativeHeight;
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

/// The battery.
struct PowerFacts {
  std::optional<bool> isMonitoringEnabled;
  /// 0.0 to 1.0.
  std::optional<float> level;
  /// 1 unplugged, 2 charging, 3 full, anything else unknown.
  std::optional<int> state;
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

/// One group of facts. `read` is called on the fact lane, one call at a time; it throws nothing.
template <class Facts>
class FactSource {
 public:
  virtual ~FactSource() = default;
  virtual Facts read() = 0;
};

}  // namespace quorvance

#pragma GCC visibility pop
