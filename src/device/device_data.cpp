#include "device/device_data.h"

#include "base/record.h"

namespace quorvance {
namespace {

Json textArray(const std::vector<std::string>& texts) {
  Json array = Json::array();
  JsonDiscarder discarder(array);
  array.get_ref<Json::array_t&>().reserve(texts.size());
  for (const std::string& text : texts) array.push_back(text);
  discarder.keep();
  return array;
}

using Families = std::shared_ptr<const std::vector<std::string>>;
using Fonts = std::shared_ptr<const std::map<std::string, std::vector<std::string>>>;

void writeFamilies(Json& object, std::string_view key, const Families& families) {
  if (families) putMember(object, key, textArray(*families));
}

void writeFonts(Json& object, std::string_view key, const Fonts& fonts) {
  if (!fonts) return;
  Json families = makeObject(fonts->size());
  const JsonDiscarder discarder(families);
  for (const auto& [family, names] : *fonts) putMember(families, family, textArray(names));
  putMember(object, key, std::move(families));
}

// Snapshots are never read back.
template <class Type>
void ignore(const Json& /*value*/, Type& /*member*/) {}

constexpr FieldCodec<Families> kFamiliesCodec = codecOf<Families, &writeFamilies, &ignore>();
constexpr FieldCodec<Fonts> kFontsCodec = codecOf<Fonts, &writeFonts, &ignore>();

constexpr auto kDeviceFields = RecordTable{
    field<&DeviceData::collectTime>("collectTime"),
    field<&DeviceData::uuid>("uuid"),
    field<&DeviceData::iosVersion>("iosVersion"),
    field<&DeviceData::deviceName>("deviceName"),
    field<&DeviceData::deviceType>("deviceType"),
    field<&DeviceData::systemLocale>("systemLocale"),
    field<&DeviceData::userInterfaceIdiom>("userInterfaceIdiom"),
    field<&DeviceData::defaultTimeZone>("defaultTimeZone"),
    field<&DeviceData::storageSize>("storageSize"),
    field<&DeviceData::ramSize>("ramSize"),
    field<&DeviceData::screenWidth>("screenWidth"),
    field<&DeviceData::screenHeight>("screenHeight"),
    field<&DeviceData::xdpi>("xdpi"),
    field<&DeviceData::ydpi>("ydpi"),
    field<&DeviceData::model>("model"),
    field<&DeviceData::familyNames>("familyNames", kFamiliesCodec),
    field<&DeviceData::fontForName>("fontForName", kFontsCodec),
    field<&DeviceData::fontCount>("fontCount"),
    field<&DeviceData::idfa>("idfa"),
    field<&DeviceData::deviceCountry>("deviceCountry"),
    field<&DeviceData::kindModel>("kindModel"),
    field<&DeviceData::isMultitaskingSupported>("isMultitaskingSupported"),
    field<&DeviceData::systemName>("systemName"),
    field<&DeviceData::isPortrait>("isPortrait"),
    field<&DeviceData::isLandscape>("isLandscape"),
    field<&DeviceData::isFlat>("isFlat"),
    field<&DeviceData::orientation>("orientation"),
    field<&DeviceData::language>("language"),
    field<&DeviceData::isValidInterfaceOrientation>("isValidInterfaceOrientation"),
    field<&DeviceData::isBatteryMonitoringEnabled>("isBatteryMonitoringEnabled"),
    field<&DeviceData::batteryLevel>("batteryLevel"),
    field<&DeviceData::batteryState>("batteryState"),
    field<&DeviceData::isProximityMonitoringEnabled>("isProximityMonitoringEnabled"),
    field<&DeviceData::proximityState>("proximityState"),
    field<&DeviceData::isGeneratingDeviceOrientationNotifications>(
        "isGeneratingDeviceOrientationNotifications"),
};

// The installed keyboards are collected and never told.
constexpr auto kSettingFields = RecordTable{
    field<&SettingData::collectTime>("collectTime"),
    field<&SettingData::isEmulator>("isEmulator"),
    field<&SettingData::labelFontSize>("labelFontSize"),
    field<&SettingData::buttonFontSize>("buttonFontSize"),
    field<&SettingData::smallSystemFontSize>("smallSystemFontSize"),
    field<&SettingData::isClosedCaptionDisplayEnabled>("isClosedCaptionDisplayEnabled"),
    field<&SettingData::isGuidedAccessEnabled>("isGuidedAccessEnabled"),
    field<&SettingData::isInvertColorsEnabled>("isInvertColorsEnabled"),
    field<&SettingData::isMonoAudioEnabled>("isMonoAudioEnabled"),
    field<&SettingData::isVoiceOverRunning>("isVoiceOverRunning"),
    field<&SettingData::inAppPurchase>("inAppPurchase"),
    field<&SettingData::internetConnectType>("internetConnectType"),
    field<&SettingData::isJailbreak>("isJailbreak"),
};

constexpr auto kSimFields = RecordTable{
    field<&SimData::collectTime>("collectTime"),
    field<&SimData::isVoiceCapable>("isVoiceCapable"),
    field<&SimData::networkOperator>("networkOperator"),
    field<&SimData::networkOperatorName>("networkOperatorName"),
    field<&SimData::networkCountryIso>("networkCountryIso"),
    field<&SimData::networkType>("networkType"),
};

}  // namespace

Json DeviceData::getJson() const { return recordToJson(*this, kDeviceFields); }

Json SettingData::getJson() const { return recordToJson(*this, kSettingFields); }

Json SimData::getJson() const { return recordToJson(*this, kSimFields); }

}  // namespace quorvance
