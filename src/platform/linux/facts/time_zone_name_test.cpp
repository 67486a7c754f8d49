#include "platform/linux/facts/time_zone_name.h"

#include <gtest/gtest.h>

namespace quorvance {
namespace {

TEST(TimeZoneNameTest, TellsZonesFromRules) {
  struct Case {
    std::string_view value;
    std::optional<std::string> zone;
  };
  const Case cases[] = {
      {"Europe/Berlin", "Europe/Berlin"},
      {":America/Argentina/Buenos_Aires", "America/Argentina/Buenos_Aires"},
      {"/usr/share/zoneinfo/Asia/Tokyo", "Asia/Tokyo"},
      {"Etc/GMT+3", "Etc/GMT+3"},
      {"EST5EDT", "EST5EDT"},
      {"", "UTC"},
      {"CET-1CEST,M3.5.0,M10.5.0/3", {}},
      {"<+03>-3", {}},
      {"/etc/localtime", {}},
      {"../../etc/passwd", {}},
  };
  for (const Case& c : cases) EXPECT_EQ(timeZoneOfVariable(c.value), c.zone) << c.value;
}

TEST(TimeZoneNameTest, FindsTheZoneInAPathOfTheDatabase) {
  EXPECT_EQ(timeZoneOfPath("../usr/share/zoneinfo/posix/Europe/Paris"), "Europe/Paris");
  EXPECT_EQ(timeZoneOfPath("/usr/share/zoneinfo/right/UTC"), "UTC");
  EXPECT_EQ(timeZoneOfPath("/usr/share/zoneinfo/"), std::nullopt);
  EXPECT_EQ(timeZoneOfPath("/usr/share/zoneinfo//etc"), std::nullopt);
}

}  // namespace
}  // namespace quorvance
