#pragma once

// What outlives a call: the configuration in force, the stored identifiers, the running session and
// the identity of a request. Start reading at inner_quorvance_data.h.

#include <cstdint>
#include <optional>
#include <vector>

#include "base/json.h"
#include "quorvance/screen_listener_type.h"
#include "quorvance/vocabulary.h"

namespace quorvance {

enum class AppRunMode : std::int64_t { PRODUCTION = 0, DEVELOPMENT = 1, DEMO = 2 };

/// Absent for an unknown word.
std::optional<AppRunMode> appRunModeFromWord(std::string_view word);
std::optional<AppRunMode> appRunModeFromRawValue(std::int64_t rawValue);

/// Which operations leave trace entries, and how many of them are kept.
struct TracingDataQvData {
  std::optional<bool> levelException = false;
  std::optional<bool> levelQvManager = false;
  std::optional<bool> levelSendingData = false;
  std::optional<bool> levelFaceVerificationData = false;
  std::int64_t maxTraceData = 1000;

  static TracingDataQvData fromJson(const Json& json);
};

/// A screen that the server watches: a type with an identifier.
struct ScreenListenersList {
  std::optional<ScreenListenerType> screenListenerType;
  std::optional<std::int64_t> screenId;

  static ScreenListenersList fromJson(const Json& json);
};

/// The server's switches. Built from one answer and never changed: it is replaced whole, and what
/// an answer leaves out is back at its default.
struct SdkConfig {
  std::optional<std::int64_t> faceVerificationDelay = -1;
  std::optional<AppRunMode> appRunMode = AppRunMode::PRODUCTION;
  /// Seconds. Until the server has answered, calls give up after the default.
  std::optional<std::int64_t> timeoutConnection = 5;
  std::optional<bool> enableBioCollection = false;
  std::optional<bool> enableCrashEye = false;
  std::optional<TracingDataQvData> tracingDataQvData = TracingDataQvData{};
  std::optional<bool> activityMap = false;
  std::vector<ScreenListenersList> screenListenersList{};

  /// Never fails: a value of another type leaves the default, unknown keys are ignored. An unknown
  /// "app_run_mode" leaves no value at all.
  static SdkConfig fromJson(const Json& json);

  /// Whether a screen of this type and identifier is configured; an entry that lacks either never
  /// matches.
  bool watches(ScreenListenerType type, std::int64_t screenId) const;
};

}  // namespace quorvance
