#include <gmock/gmock.h>

#include "core/manager_world_test_support.h"

namespace quorvance {
namespace {

constexpr const char* kCrashesOn = R"({"enable_crash_eye": true})";

TEST(ManagerCrashTest, OnlyTheSwitchOfTheConfigurationInstalls) {
  for (const char* off : {"{}", R"({"enable_crash_eye": false})", R"({"enable_crash_eye": 1})"}) {
    ManagerWorld world;
    world.configure(off);
    EXPECT_THAT(world.trap->plans, testing::IsEmpty()) << off;
  }
  ManagerWorld world;
  world.configure(kCrashesOn);
  ASSERT_EQ(world.trap->plans.size(), 1U);
  // The versions of the reports are those of this device.
  const CrashForm& form = world.trap->plans[0].exceptionForm;
  EXPECT_THAT(form.at(1).bytes, testing::HasSubstr("\"version\": \"12\""));
}

TEST(ManagerCrashTest, OnlyWhatTheTrapCouldNotStoreIsStored) {
  ManagerWorld world;
  world.configure(kCrashesOn);
  CaughtCrash crash{false, "SIGABRT", "Signal SIGABRT(6) was raised.\n", "frame", true};
  EXPECT_TRUE(world.trap->fall(crash));
  world.time->run();
  EXPECT_EQ(world.documents->count("crash"), 0U);
  crash.isStored = false;
  world.trap->fall(crash);
  world.time->run();
  EXPECT_EQ(world.documents->count("crash"), 1U);
}

TEST(ManagerCrashTest, ReportCarriesTheNumberOfASignalOfTheTable) {
  const std::vector<std::tuple<CrashModelType, const char*, std::string>> rows = {
      {CrashModelType::signal, "SIGBUS", R"("error_type":"SIGBUS","error_code":10,)"},
      {CrashModelType::signal, "OTHER", R"("error_type":"OTHER",)"},
      {CrashModelType::exception, "SIGBUS", R"("error_type":"SIGBUS",)"}};
  for (const auto& [type, name, middle] : rows) {
    ManagerWorld world;
    world.manager->crashEyeDidCatchCrash({type, name, "why", "1.0.0", "12", "m", "frame"});
    world.time->run();
    ASSERT_EQ(world.documents->count("crash"), 1U);
    EXPECT_EQ(textOf(*parseJson(world.documents->files.begin()->second)),
              R"({"error_stack":"frame","version":"12","device_model":"m","sdk_version":"1.0.0",)"
              R"("cause":"why",)" +
                  middle + R"("error_timestamp":1700000000000})");
  }
}

TEST(ManagerCrashTest, ManagerThatIsGoneIsNotTold) {
  ManagerWorld world;
  world.configure(kCrashesOn);
  world.http->dropAll();
  world.time->dropAll();
  world.manager.reset();
  EXPECT_FALSE(world.trap->fall({}));
}

}  // namespace
}  // namespace quorvance
