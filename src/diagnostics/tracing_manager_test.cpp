#include "diagnostics/tracing_manager.h"

#include <gtest/gtest.h>

#include "platform/testing/test_world.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;

struct TracingWorld : TestWorld {
  std::shared_ptr<InnerQuorvanceData> state =
      std::make_shared<InnerQuorvanceData>(time, store, identity);
  TracingManager tracing{state, std::make_shared<SystemTexts>(environment)};
};

TEST(TracingTest, BufferHoldsOneMoreThanItsCapAndNothingWithoutOneOrWithItsLevelOff) {
  using Cap = std::optional<std::int64_t>;
  for (const auto& [cap, held] : {std::pair<Cap, std::size_t>(), {-1, 0U}, {0, 1U}, {2, 3U}}) {
    TracingWorld world;
    SdkConfig config;
    config.tracingDataQvData->maxTraceData = cap.value_or(0);
    if (!cap) config.tracingDataQvData.reset();
    world.state->replaceSdkConfig(config);
    auto off = world.tracing.traceStart(false, "m", {});
    EXPECT_FALSE(off.has_value());
    world.tracing.traceEnd(true, off);
    for (int i = 0; i < 9; ++i) {
      EXPECT_TRUE(world.tracing.traceStart(true, "m", {}).has_value());
      world.tracing.traceException({"d", 1, "t", std::nullopt});
    }
    EXPECT_EQ(world.tracing.size(), held);
  }
}

TEST(TracingTest, RecordsAreRestampedAndAppendedTextStaysWithItsCopy) {
  TracingWorld world;
  auto record = world.tracing.traceStart(true, "logout", {"a"});
  auto copy = record;
  world.time->advance(123ms);
  world.tracing.traceAppend(true, copy, "response: {}");
  world.time->advance(1s);
  world.tracing.traceEnd(true, record);
  world.tracing.traceEnd(true, record);
  const Json entries = world.tracing.entries();
  ASSERT_EQ(entries.size(), 4U);
  const auto withoutThread = [&](std::size_t i) {
    Json entry = entries[i];
    EXPECT_FALSE(findText(entry, "threadName")->empty());
    entry.erase("threadName");
    return textOf(entry);
  };
  EXPECT_EQ(withoutThread(0), R"({"date":"2023-11-14T22:13:20.000Z","methodName":"logout",)"
                              R"("statusLoggingType":"Start","paramList":["a"]})");
  EXPECT_EQ(withoutThread(1), R"({"date":"2023-11-14T22:13:20.123Z","methodName":"logout",)"
                              R"("statusLoggingType":"Middle","paramList":["a","response: {}"]})");
  EXPECT_EQ(withoutThread(3), R"({"date":"2023-11-14T22:13:21.123Z","methodName":"logout",)"
                              R"("statusLoggingType":"End","paramList":["a"]})");
}

TEST(TracingTest, ExceptionsAreRecordedWithAllLevelsOff) {
  TracingWorld world;
  world.tracing.traceException({"disk", 28, "No space left", "full"});
  world.tracing.traceException({"disk", 28, "No space left", std::nullopt});
  const Json entries = world.tracing.entries();
  EXPECT_EQ(textOf(entries[0]),
            R"({"error_stack":"No space left","device_model":"x86_64","sdk_version":"1.0.0",)"
            R"("cause":"full","error_type":"disk","error_code":28,)"
            R"("error_timestamp":1700000000000})");
  EXPECT_EQ(findText(entries[1], "cause"), nullptr);
}

}  // namespace
}  // namespace quorvance
