#include "state/sdk_config.h"

#include <algorithm>
#include <array>

#include "base/record.h"
#include "base/vocabulary_table.h"

namespace quorvance {

template <>
struct VocabularyTable<AppRunMode> {
  static constexpr auto kWords =
      std::to_array<std::string_view>({"PRODUCTION", "DEVELOPMENT", "DEMO"});
  static constexpr AppRunMode kLast = AppRunMode::DEMO;
};

namespace {

constexpr auto kConfigFields = RecordTable{
    field<&SdkConfig::faceVerificationDelay>("face_verification_delay"),
    field<&SdkConfig::timeoutConnection>("timeout_connection"),
    field<&SdkConfig::enableBioCollection>("enable_bio_collection"),
    field<&SdkConfig::activityMap>("activity_map"),
    field<&SdkConfig::enableCrashEye>("enable_crash_eye"),
};

constexpr auto kTracingFields = RecordTable{
    field<&TracingDataQvData::levelException>("level_exception"),
    field<&TracingDataQvData::levelQvManager>("level_qv_manager"),
    field<&TracingDataQvData::levelSendingData>("level_sending_data"),
    field<&TracingDataQvData::levelFaceVerificationData>("level_face_verification_data"),
    field<&TracingDataQvData::maxTraceData>("max_trace_data"),
};

// Elements that are no objects are skipped.
std::vector<ScreenListenersList> readScreens(const Json& array) {
  std::vector<ScreenListenersList> screens;
  for (const Json& element : array) {
    if (element.is_object()) screens.push_back(ScreenListenersList::fromJson(element));
  }
  return screens;
}

}  // namespace

std::optional<AppRunMode> appRunModeFromWord(std::string_view word) {
  return valueOf<AppRunMode>(word);
}

std::optional<AppRunMode> appRunModeFromRawValue(std::int64_t rawValue) {
  return VocabularyEnumerator<AppRunMode>::fromRawValue(rawValue);
}

TracingDataQvData TracingDataQvData::fromJson(const Json& json) {
  return recordFromJson(json, kTracingFields);
}

// Here an unknown type leaves the field absent; the vocabulary's fallback does not apply.
ScreenListenersList ScreenListenersList::fromJson(const Json& json) {
  ScreenListenersList screen;
  if (const std::string* word = findText(json, "screenListenerType")) {
    screen.screenListenerType = ScreenListenerTypeToString::fromNillableString(*word);
  }
  screen.screenId = findInteger(json, "screenId");
  return screen;
}

SdkConfig SdkConfig::fromJson(const Json& json) {
  SdkConfig config;
  readRecord(json, config, kConfigFields);
  if (const std::string* word = findText(json, "app_run_mode")) {
    config.appRunMode = appRunModeFromWord(*word);
  }
  if (const Json* levels = findObject(json, "tracing_manager")) {
    config.tracingDataQvData = TracingDataQvData::fromJson(*levels);
  }
  if (const Json* screens = findArray(json, "screen_listeners_list")) {
    config.screenListenersList = readScreens(*screens);
  }
  return config;
}

bool SdkConfig::watches(ScreenListenerType type, std::int64_t screenId) const {
  return std::any_of(screenListenersList.begin(), screenListenersList.end(),
                     [&](const ScreenListenersList& screen) {
                       return screen.screenListenerType == type && screen.screenId == screenId;
                     });
}

}  // namespace quorvance
