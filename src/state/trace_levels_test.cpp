#include "state/trace_levels.h"

#include <gtest/gtest.h>

#include <limits>

namespace quorvance {
namespace {

constexpr TraceLevel kAllLevels[] = {TraceLevel::exceptions, TraceLevel::qvManager,
                                     TraceLevel::sendingData, TraceLevel::faceVerification};

TEST(TraceLevelsTest, EachLevelIsItsOwnSwitch) {
  std::optional<bool> TracingDataQvData::*const members[] = {
      &TracingDataQvData::levelException, &TracingDataQvData::levelQvManager,
      &TracingDataQvData::levelSendingData, &TracingDataQvData::levelFaceVerificationData};
  TraceLevels levels;
  for (std::size_t on = 0; on < std::size(members); ++on) {
    TracingDataQvData record;
    record.*members[on] = true;
    levels.set(record);
    for (std::size_t i = 0; i < std::size(kAllLevels); ++i) {
      EXPECT_EQ(levels.isOn(kAllLevels[i]), i == on) << i;
    }
  }
}

TEST(TraceLevelsTest, ARecordIsReplacedWhole) {
  TraceLevels levels;
  for (const std::int64_t cap : {std::int64_t{-1}, std::numeric_limits<std::int64_t>::max()}) {
    levels.set(TracingDataQvData{.levelException = true, .maxTraceData = cap});
    EXPECT_EQ(levels.maxTraceData(), cap);
  }
  levels.set(std::nullopt);
  EXPECT_EQ(levels.maxTraceData(), std::nullopt);
  levels.set(TracingDataQvData{});
  EXPECT_FALSE(levels.isOn(TraceLevel::exceptions));
}

TEST(TraceLevelsDeathTest, AMissingLevelOrRecordStopsTheProcess) {
  TraceLevels levels;
  levels.set(TracingDataQvData{.levelSendingData = std::nullopt});
  EXPECT_FALSE(levels.isOn(TraceLevel::qvManager));
  EXPECT_DEATH(levels.isOn(TraceLevel::sendingData), "fatal.*level");
  levels.set(std::nullopt);
  EXPECT_DEATH(levels.isOn(TraceLevel::faceVerification), "fatal.*level");
}

}  // namespace
}  // namespace quorvance
