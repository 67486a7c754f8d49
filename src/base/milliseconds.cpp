#include "base/milliseconds.h"

#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>

#include "base/fatal.h"

namespace quorvance {

std::int64_t millisecondsFromSeconds(double seconds) {
  // 2^63 is the first double that a signed 64-bit integer cannot hold.
  constexpr double kLimit = 9223372036854775808.0;
  const double milliseconds = seconds * 1000.0;
  if (!std::isfinite(milliseconds) || milliseconds >= kLimit || milliseconds < -kLimit) {
    fatalError("a time is not finite or does not fit 64-bit milliseconds");
  }
  return static_cast<std::int64_t>(milliseconds);
}

std::string dateText(std::int64_t milliseconds) {
  using namespace std::chrono;
  // Beyond these days the calendar of the standard library ends.
  constexpr std::chrono::milliseconds kFirst =
      sys_days(year::min() / January / 1).time_since_epoch();
  constexpr std::chrono::milliseconds kEnd =
      sys_days(year::max() / December / 31).time_since_epoch() + days(1);
  const std::chrono::milliseconds time(milliseconds);
  if (time < kFirst || time >= kEnd) return {};
  const auto secondsPart = floor<seconds>(time);
  const auto fraction = time - secondsPart;
  const auto day = floor<days>(secondsPart);
  const year_month_day date{sys_days(day)};
  const hh_mm_ss clock(secondsPart - day);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%03dZ",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()), static_cast<int>(fraction.count()));
  return text.data();
}

}  // namespace quorvance
