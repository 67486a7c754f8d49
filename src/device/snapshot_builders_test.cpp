#include "device/snapshot_builders.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>
#include <utility>

#include "base/json_test_support.h"

namespace quorvance {
namespace {

DeviceFacts everyFact() {
  DeviceFacts facts;
  facts.system = {"12",    "Sys", "Model-1", "handset",       "Handset", "My phone", 0,
                  "de_DE", "DE",  "de",      "Europe/Berlin", 2 << 20,   true};
  facts.storage = {3 << 20};
  facts.screen = {411.9, 731.4, 1080.0, 1920.0};
  facts.fonts =
      std::make_shared<const FontFacts>(FontFacts{{"B", "A"}, {{"B", {"B-2", "B-1"}}, {"A", {}}}});
  facts.posture = {3, true, false, true};
  facts.power = {false, {0.1F, 2}};
  facts.accessibility = {17.0F, 18.5F, 0.1F, true, false, true, false, true, {"en_US"}};
  facts.network = {"LTE", false, true, "262", "01", "Carrier", "DE"};
  return facts;
}

SnapshotInputs inputsOf(const DeviceFacts& facts, bool isInDebugMode = false) {
  return {.facts = facts,
          .vendorIdentifier = "V",
          .advertisingIdentifier = "I",
          .now = 7,
          .isInDebugMode = isInDebugMode};
}

constexpr std::string_view kProductionKeys =
    R"({"collectTime":7,"uuid":"V","iosVersion":"12","deviceName":"My phone",)"
    R"("deviceType":"Handset","systemLocale":"de_DE","userInterfaceIdiom":"0",)"
    R"("defaultTimeZone":"Europe/Berlin","storageSize":3,"ramSize":2,"screenWidth":411,)"
    R"("screenHeight":731,"xdpi":1080,"ydpi":1920,"model":"Model-1","familyNames":["B","A"],)"
    R"("fontForName":{"A":[],"B":["B-2","B-1"]},"fontCount":2,"idfa":"I","deviceCountry":"DE")";

TEST(DeviceSnapshotTest, ToldInProductionWithoutOrientationBatteryAndProximity) {
  const DeviceFacts facts = everyFact();
  EXPECT_EQ(compactText(buildDeviceData(inputsOf(facts)).getJson()),
            std::string(kProductionKeys) + R"(,"language":"de"})");
}

TEST(DeviceSnapshotTest, ToldWholeInDebugMode) {
  const DeviceFacts facts = everyFact();
  EXPECT_EQ(compactText(buildDeviceData(inputsOf(facts, true)).getJson()),
            std::string(kProductionKeys) +
                R"(,"kindModel":"handset","isMultitaskingSupported":true,"systemName":"Sys",)"
                R"("isPortrait":false,"isLandscape":true,"isFlat":false,)"
                R"("orientation":"landscapeLeft","language":"de",)"
                R"("isValidInterfaceOrientation":true,"isBatteryMonitoringEnabled":false,)"
                R"("batteryLevel":0.1,"batteryState":"charging",)"
                R"("isProximityMonitoringEnabled":false,"proximityState":true,)"
                R"("isGeneratingDeviceOrientationNotifications":true})");
}

TEST(DeviceSnapshotTest, UnknownFactsAreLeftOutButForTheStorage) {
  const DeviceFacts facts;
  for (const bool isInDebugMode : {false, true}) {
    SnapshotInputs inputs{facts, std::nullopt, std::nullopt, 7, isInDebugMode, false};
    EXPECT_EQ(compactText(buildDeviceData(inputs).getJson()),
              R"({"collectTime":7,"storageSize":0})");
  }
}

TEST(DeviceSnapshotTest, SizesAreWholeMegabytes) {
  const std::vector<std::pair<std::int64_t, std::int64_t>> rows = {
      {0, 0},
      {1'048'575, 0},
      {1'048'576, 1},
      {2'097'151, 1},
      {std::numeric_limits<std::int64_t>::max(), 8'796'093'022'207},
      {-1, 0},
      {-1'048'577, -1}};
  for (const auto& [bytes, megabytes] : rows) {
    DeviceFacts facts;
    facts.storage.totalBytes = bytes;
    facts.system.memoryBytes = std::max<std::int64_t>(bytes, 0);
    const DeviceData data = buildDeviceData(inputsOf(facts));
    EXPECT_EQ(data.storageSize, megabytes) << bytes;
    EXPECT_EQ(data.ramSize, std::max<std::int64_t>(megabytes, 0)) << bytes;
  }
}

TEST(DeviceSnapshotTest, MetricsAreTruncatedAndNeverOverflow) {
  DeviceFacts facts;
  facts.screen.logicalWidth = 0.99;
  facts.screen.logicalHeight = std::numeric_limits<double>::quiet_NaN();
  facts.screen.nativeWidth = 1e300;
  facts.screen.nativeHeight = -1.9;
  const DeviceData data = buildDeviceData(inputsOf(facts));
  EXPECT_EQ(data.screenWidth, 0);
  EXPECT_EQ(data.screenHeight, std::nullopt);
  EXPECT_EQ(data.xdpi, std::nullopt);
  EXPECT_EQ(data.ydpi, -1);
}

TEST(DeviceSnapshotTest, AnOrientationIsPortraitLandscapeFlatOrNone) {
  // Portrait, landscape, flat, valid for an interface.
  const std::vector<std::tuple<int, std::string, std::string>> rows = {
      {0, "0000", "unknown"},        {1, "1001", "portrait"}, {2, "1001", "portraitUpsideDown"},
      {3, "0101", "landscapeLeft"},  {6, "0010", "faceDown"}, {5, "0010", "faceUp"},
      {4, "0101", "landscapeRight"}, {7, "0000", "unknown"},  {-1, "0000", "unknown"}};
  for (const auto& [orientation, shape, name] : rows) {
    DeviceFacts facts;
    facts.posture.orientation = orientation;
    const DeviceData data = buildDeviceData(inputsOf(facts, true));
    std::string found;
    for (const auto& flag :
         {data.isPortrait, data.isLandscape, data.isFlat, data.isValidInterfaceOrientation}) {
      found += flag.value() ? '1' : '0';
    }
    EXPECT_EQ(found, shape) << orientation;
    EXPECT_EQ(data.orientation, name) << orientation;
  }
}

TEST(DeviceSnapshotTest, BatteryStatesHaveThreeNames) {
  const char* const names[] = {"unknown", "unknown", "unplugged", "charging", "full", "unknown"};
  for (int state = -1; state <= 4; ++state) EXPECT_EQ(batteryStateName(state), names[state + 1]);
}

TEST(SettingSnapshotTest, WritesItsKeysInOrderAndNoKeyboards) {
  const DeviceFacts facts = everyFact();
  EXPECT_EQ(compactText(buildSettingData(inputsOf(facts)).getJson()),
            R"({"collectTime":7,"isEmulator":false,"labelFontSize":17.0,"buttonFontSize":18.5,)"
            R"("smallSystemFontSize":0.1,"isClosedCaptionDisplayEnabled":true,)"
            R"("isGuidedAccessEnabled":false,"isInvertColorsEnabled":true,)"
            R"("isMonoAudioEnabled":false,"isVoiceOverRunning":true,"inAppPurchase":false,)"
            R"("internetConnectType":"4G","isJailbreak":false})");
  const DeviceFacts unknown;
  EXPECT_EQ(compactText(buildSettingData(inputsOf(unknown)).getJson()),
            R"({"collectTime":7,"isEmulator":false,"inAppPurchase":false,)"
            R"("internetConnectType":"unreachable","isJailbreak":false})");
}

TEST(SimSnapshotTest, WritesItsKeysInOrder) {
  const DeviceFacts facts = everyFact();
  EXPECT_EQ(compactText(buildSimData(inputsOf(facts)).getJson()),
            R"({"collectTime":7,"isVoiceCapable":"true","networkOperator":"26201",)"
            R"("networkOperatorName":"Carrier","networkCountryIso":"DE","networkType":"4G"})");
  DeviceFacts mute;
  mute.network.isVoiceCapable = false;
  EXPECT_EQ(compactText(buildSimData(inputsOf(mute)).getJson()),
            R"({"collectTime":7,"isVoiceCapable":"false","networkType":"unreachable"})");
}

TEST(NetworkKindTest, ComesFromTheRadioTechnologyAndFromTheWirelessRouteFirst) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> rows = {
      {"2G", {"GPRS", "Edge", "CDMA1x"}},
      {"3G", {"WCDMA", "HSUPA", "CDMAEVDORev0", "CDMAEVDORevA", "CDMAEVDORevB", "eHRPD"}},
      {"4G", {"LTE"}},
      {"unreachable", {"HSDPA", "NR", "lte", ""}}};
  for (const auto& [kind, technologies] : rows) {
    for (const std::string& radio : technologies) {
      DeviceFacts facts;
      facts.network.radioTechnology = radio;
      EXPECT_EQ(buildSettingData(inputsOf(facts)).internetConnectType, kind) << radio;
      facts.network.isDefaultRouteWireless = true;
      EXPECT_EQ(buildSettingData(inputsOf(facts)).internetConnectType, "wifi");
      EXPECT_EQ(buildSimData(inputsOf(facts)).networkType, kind);
    }
  }
}

}  // namespace
}  // namespace quorvance
