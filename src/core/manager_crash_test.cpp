#include <gmock/gmock.h>

#include "core/recording_parts_test_support.h"
#include "platform/testing/fake_crash_trap.h"

namespace quorvance {
namespace {

/// A manager over doubles with the real crash catcher.
struct CrashedWorld : TestWorld {
  std::shared_ptr<FakeCrashTrap> trap = std::make_shared<FakeCrashTrap>();
  std::shared_ptr<ManagerCore> manager;

  explicit CrashedWorld(const std::string& configuration) {
    Platform platform = this->platform();
    platform.crashTrap = trap;
    manager = ManagerCore::make(std::make_shared<Context>(platform));
    http->answer(ManagerWorld::kConfigurationPath, okReply(configuration));
    manager->setup(ManagerWorld::kServer, "u1", nullptr);
    time->run();
  }
};

TEST(ManagerCrashTest, OnlyTheSwitchOfTheConfigurationInstalls) {
  for (const char* off : {"{}", R"({"enable_crash_eye": false})", R"({"enable_crash_eye": 1})"}) {
    EXPECT_THAT(CrashedWorld(off).trap->plans, testing::IsEmpty()) << off;
  }
  const CrashedWorld world(R"({"enable_crash_eye": true})");
  ASSERT_EQ(world.trap->plans.size(), 1U);
  // The versions of the reports are those of this device.
  const CrashForm& form = world.trap->plans[0].exceptionForm;
  EXPECT_THAT(form.at(1).bytes, testing::HasSubstr("\"version\": \"12\""));
}

TEST(ManagerCrashTest, ManagerThatIsGoneIsNotTold) {
  CrashedWorld world(R"({"enable_crash_eye": true})");
  world.http->dropAll();
  world.time->dropAll();
  world.manager.reset();
  EXPECT_FALSE(world.trap->fall({}));
}

}  // namespace
}  // namespace quorvance
