#pragma once

// What is told of the device: the three snapshot records, the permissions, and the payloads that
// carry them. Start reading at device_data_manager.h.

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/json.h"
#include "quorvance/platform/device_facts.h"

namespace quorvance {

/// Hardware, system, screen, fonts, locale; in debug mode also orientation, battery and proximity.
/// Absent fields are left out.
struct DeviceData {
  /// Milliseconds since 1970.
  std::optional<std::int64_t> collectTime{};
  std::optional<std::string> uuid{};
  std::optional<std::string> iosVersion{};
  std::optional<std::string> deviceName{};
  std::optional<std::string> deviceType{};
  std::optional<std::string> systemLocale{};
  std::optional<std::string> userInterfaceIdiom{};
  std::optional<std::string> defaultTimeZone{};
  /// MB, rounded toward zero.
  std::optional<std::int64_t> storageSize{};
  std::optional<std::int64_t> ramSize{};
  /// Logical units; the next two are native pixels, whatever their names say.
  std::optional<std::int64_t> screenWidth{};
  std::optional<std::int64_t> screenHeight{};
  std::optional<std::int64_t> xdpi{};
  std::optional<std::int64_t> ydpi{};
  std::optional<std::string> model{};
  /// Shared with the cache, null when unknown: fonts are many.
  std::shared_ptr<const std::vector<std::string>> familyNames{};
  std::shared_ptr<const std::map<std::string, std::vector<std::string>>> fontForName{};
  std::optional<std::int64_t> fontCount{};
  std::optional<std::string> idfa{};
  std::optional<std::string> deviceCountry{};
  std::optional<std::string> kindModel{};
  std::optional<bool> isMultitaskingSupported{};
  std::optional<std::string> systemName{};
  std::optional<bool> isPortrait{};
  std::optional<bool> isLandscape{};
  std::optional<bool> isFlat{};
  std::optional<std::string> orientation{};
  std::optional<std::string> language{};
  std::optional<bool> isValidInterfaceOrientation{};
  std::optional<bool> isBatteryMonitoringEnabled{};
  std::optional<float> batteryLevel{};
  std::optional<std::string> batteryState{};
  std::optional<bool> isProximityMonitoringEnabled{};
  std::optional<bool> proximityState{};
  std::optional<bool> isGeneratingDeviceOrientationNotifications{};

  Json getJson() const;
};

/// Settings of the user interface and signs of an emulator. Absent fields are left out.
struct SettingData {
  std::optional<std::int64_t> collectTime{};
  std::optional<bool> isEmulator{};
  std::optional<float> labelFontSize{};
  std::optional<float> buttonFontSize{};
  std::optional<float> smallSystemFontSize{};
  std::optional<bool> isClosedCaptionDisplayEnabled{};
  std::optional<bool> isGuidedAccessEnabled{};
  std::optional<bool> isInvertColorsEnabled{};
  std::optional<bool> isMonoAudioEnabled{};
  std::optional<bool> isVoiceOverRunning{};
  std::optional<bool> inAppPurchase{};
  std::optional<std::string> internetConnectType{};
  std::optional<bool> isJailbreak{};
  /// Never written.
  std::optional<std::vector<std::string>> installKeyboards{};

  Json getJson() const;
};

/// The cellular carrier. Absent fields are left out.
struct SimData {
  std::optional<std::int64_t> collectTime{};
  std::optional<std::string> isVoiceCapable{};
  /// Mobile country code, then mobile network code (ITU-T E.212).
  std::optional<std::string> networkOperator{};
  std::optional<std::string> networkOperatorName{};
  std::optional<std::string> networkCountryIso{};
  std::optional<std::string> networkType{};

  Json getJson() const;
};

}  // namespace quorvance
