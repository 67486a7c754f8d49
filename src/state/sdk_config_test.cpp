#include "state/sdk_config.h"

#include <gtest/gtest.h>

#include <utility>

#include "base/json_test_support.h"

namespace quorvance {
namespace {

template <class Value>
Json numberOrNull(const std::optional<Value>& value) {
  return value ? Json(static_cast<std::int64_t>(*value)) : Json(nullptr);
}

// The record itself is never written; tests compare its fields in an array, in their order.
std::string allFieldsOf(const SdkConfig& config) {
  Json fields = Json::array();
  const auto add = [&](const auto& value) { fields.push_back(numberOrNull(value)); };
  add(config.faceVerificationDelay);
  add(config.appRunMode);
  add(config.timeoutConnection);
  add(config.enableBioCollection);
  add(config.enableCrashEye);
  const TracingDataQvData levels = config.tracingDataQvData.value();
  add(levels.levelException);
  add(levels.levelQvManager);
  add(levels.levelSendingData);
  add(levels.levelFaceVerificationData);
  fields.push_back(levels.maxTraceData);
  add(config.activityMap);
  for (const ScreenListenersList& screen : config.screenListenersList) {
    add(screen.screenListenerType);
    add(screen.screenId);
  }
  return compactText(fields);
}

std::string configFieldsRead(const Json& json) { return allFieldsOf(SdkConfig::fromJson(json)); }

constexpr std::string_view kDefaultFields = "[-1,0,5,0,0,0,0,0,0,1000,0]";

TEST(SdkConfigTest, EachKeyChangesItsOwnFieldAndNoOther) {
  EXPECT_EQ(allFieldsOf(SdkConfig{}), kDefaultFields);
  const std::vector<std::pair<std::string, std::string_view>> rows = {
      {R"({"face_verification_delay":0})", "[0,0,5,0,0,0,0,0,0,1000,0]"},
      {R"({"app_run_mode":"DEMO"})", "[-1,2,5,0,0,0,0,0,0,1000,0]"},
      {R"({"app_run_mode":"demo"})", "[-1,null,5,0,0,0,0,0,0,1000,0]"},
      {R"({"timeout_connection":-3})", "[-1,0,-3,0,0,0,0,0,0,1000,0]"},
      {R"({"enable_bio_collection":true})", "[-1,0,5,1,0,0,0,0,0,1000,0]"},
      {R"({"enable_crash_eye":true})", "[-1,0,5,0,1,0,0,0,0,1000,0]"},
      {R"({"tracing_manager":{"level_exception":true}})", "[-1,0,5,0,0,1,0,0,0,1000,0]"},
      {R"({"tracing_manager":{"level_qv_manager":true}})", "[-1,0,5,0,0,0,1,0,0,1000,0]"},
      {R"({"tracing_manager":{"level_sending_data":true}})", "[-1,0,5,0,0,0,0,1,0,1000,0]"},
      {R"({"tracing_manager":{"level_face_verification_data":true}})",
       "[-1,0,5,0,0,0,0,0,1,1000,0]"},
      {R"({"tracing_manager":{"max_trace_data":0}})", "[-1,0,5,0,0,0,0,0,0,0,0]"},
      {R"({"activity_map":true})", "[-1,0,5,0,0,0,0,0,0,1000,1]"},
      {R"({"tracing_manager":{"levelException":true,"maxTraceData":1}})", kDefaultFields},
      {R"({"timeout_connection":9223372036854775808,"screen_listeners_list":[]})", kDefaultFields},
      {R"(["enable_crash_eye"])", kDefaultFields}};
  for (const auto& [text, fields] : rows) EXPECT_EQ(configFieldsRead(parsedJson(text)), fields);
}

TEST(SdkConfigTest, IgnoresOtherKindsUnderEveryKey) {
  expectOtherKindsIgnored(
      parsedJson(R"({"face_verification_delay":1,"app_run_mode":"DEMO","timeout_connection":1,)"
                 R"("enable_bio_collection":true,"activity_map":true,"enable_crash_eye":true,)"
                 R"("tracing_manager":{},"screen_listeners_list":[]})"),
      &configFieldsRead);
  expectOtherKindsIgnored(
      parsedJson(R"({"level_exception":true,"level_qv_manager":true,"level_sending_data":true,)"
                 R"("level_face_verification_data":true,"max_trace_data":1})"),
      [](const Json& json) {
        return allFieldsOf(SdkConfig{.tracingDataQvData = TracingDataQvData::fromJson(json)});
      });
}

TEST(SdkConfigTest, RunModesComeFromKnownNumbers) {
  EXPECT_EQ(appRunModeFromRawValue(2), AppRunMode::DEMO);
  for (const std::int64_t raw : {-1, 3}) EXPECT_EQ(appRunModeFromRawValue(raw), std::nullopt);
}

TEST(SdkConfigTest, KeepsItsScreensInOrderAndSkipsWhatIsNoObject) {
  const Json json = parsedJson(
      R"({"screen_listeners_list":[{"screenListenerType":"GENERAL","screenId":"7"},5,null,[],)"
      R"({"screenListenerType":"login_form","screenId":-1},)"
      R"({"screenListenerType":"LOGIN_FORM","screenId":8},{"screenId":7.0}]})");
  EXPECT_EQ(configFieldsRead(json), "[-1,0,5,0,0,0,0,0,0,1000,0,12,null,null,-1,1,8,null,null]");
  const SdkConfig config = SdkConfig::fromJson(json);
  EXPECT_TRUE(config.watches(ScreenListenerType::LOGIN_FORM, 8));
  EXPECT_FALSE(config.watches(ScreenListenerType::LOGIN_FORM, 7));
  EXPECT_FALSE(config.watches(ScreenListenerType::GENERAL, 0)) << "an entry without identifier";
}

}  // namespace
}  // namespace quorvance
