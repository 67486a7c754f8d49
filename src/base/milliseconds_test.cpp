#include "base/milliseconds.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>
#include <vector>

namespace quorvance {
namespace {

TEST(MillisecondsTest, TruncateTowardZeroUpToTheEndsOfSixtyFourBits) {
  const std::vector<std::pair<double, std::int64_t>> rows = {
      {1.9999, 1999},
      {-1.9999, -1999},
      {0.0009, 0},
      {-0.0009, 0},
      {1700000000.123, 1'700'000'000'123},
      {-9223372036854775.808, std::numeric_limits<std::int64_t>::min()}};
  for (const auto& [seconds, milliseconds] : rows) {
    EXPECT_EQ(millisecondsFromSeconds(seconds), milliseconds) << seconds;
  }
  EXPECT_GT(millisecondsFromSeconds(9223372036854774.0), 9'223'372'036'854'000'000);
}

TEST(MillisecondsDeathTest, StopTheProcessForATimeThatDoesNotFit) {
  for (const double seconds :
       {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
        -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::max(),
        9223372036854775.808, -9223372036854778.0}) {
    EXPECT_DEATH(millisecondsFromSeconds(seconds), "fatal.*milliseconds") << seconds;
  }
}

TEST(DateTextTest, IsTheUtcCalendarWithThreeFractionalDigits) {
  const std::vector<std::pair<std::int64_t, std::string>> rows = {
      {1'700'000'000'123, "2023-11-14T22:13:20.123Z"},
      {7, "1970-01-01T00:00:00.007Z"},
      {-1, "1969-12-31T23:59:59.999Z"},
      {951'782'400'000, "2000-02-29T00:00:00.000Z"},
      {1'709'251'199'999, "2024-02-29T23:59:59.999Z"},
      {253'402'300'799'999, "9999-12-31T23:59:59.999Z"},
      {-62'135'596'800'000, "0001-01-01T00:00:00.000Z"}};
  for (const auto& [milliseconds, text] : rows) EXPECT_EQ(dateText(milliseconds), text);
}

TEST(DateTextTest, SurvivesTimesBeyondTheCalendar) {
  using Limits = std::numeric_limits<std::int64_t>;
  for (const std::int64_t time : {Limits::min(), Limits::min() + 999, Limits::max()}) {
    const std::string text = dateText(time);
    EXPECT_TRUE(text.empty() || text.ends_with('Z')) << text;
  }
}

}  // namespace
}  // namespace quorvance
