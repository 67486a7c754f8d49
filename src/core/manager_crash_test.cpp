#include <gmock/gmock.h>

#include "core/manager_world_test_support.h"

namespace quorvance {
namespace {

TEST(ManagerCrashTest, OnlyTheSwitchOfTheConfigurationInstalls) {
  ManagerWorld world;
  for (const char* off : {"{}", R"({"enable_crash_eye": false})", R"({"enable_crash_eye": 1})"}) {
    world.configure(off);
    EXPECT_THAT(world.trap->plans, testing::IsEmpty()) << off;
  }
  world.configure(R"({"enable_crash_eye": true})");
  ASSERT_EQ(world.trap->plans.size(), 1U);
  // The versions of the reports are those of this device.
  const CrashReportTemplate& reportTemplate = world.trap->plans[0].exceptionTemplate;
  EXPECT_THAT(reportTemplate.at(1).bytes, testing::HasSubstr("\"version\": \"12\""));
}

TEST(ManagerCrashTest, ManagerThatIsGoneIsNotTold) {
  ManagerWorld world;
  world.configure(R"({"enable_crash_eye": true})");
  EXPECT_TRUE(world.trap->fall({}));
  world.http->dropAll();
  world.time->dropAll();
  world.manager.reset();
  EXPECT_FALSE(world.trap->fall({}));
}

}  // namespace
}  // namespace quorvance
