#include "diagnostics/crash_eye.h"

#include <gmock/gmock.h>

#include "platform/testing/fake_crash_trap.h"
#include "platform/testing/fake_device.h"
#include "quorvance/version.h"

namespace quorvance {
namespace {

class RecordingDelegate : public CrashEyeDelegate {
 public:
  void crashEyeDidCatchCrash(const CrashModel& crash) override { crashes.push_back(crash); }
  std::vector<CrashModel> crashes;
};

struct EyeWorld {
  std::shared_ptr<FakeCrashTrap> trap = std::make_shared<FakeCrashTrap>();
  std::shared_ptr<FakeEnvironment> environment = std::make_shared<FakeEnvironment>();
  std::shared_ptr<SystemTexts> texts = std::make_shared<SystemTexts>(environment);
  CrashEye eye{trap, texts, nullptr};
  CaughtCrash crash{false, "SIGBUS", "Signal SIGBUS(10) was raised.\n", "frame", true};
};

TEST(CrashEyeTest, EveryLiveDelegateIsToldOnceAndWithoutOneNobodyListens) {
  EyeWorld world;
  auto first = std::make_shared<RecordingDelegate>();
  auto gone = std::make_shared<RecordingDelegate>();
  auto last = std::make_shared<RecordingDelegate>();
  for (const auto& delegate : {first, gone, last, first}) world.eye.install(delegate);
  gone.reset();
  EXPECT_TRUE(world.trap->fall(world.crash));
  EXPECT_EQ(first->crashes.size(), 1U);
  EXPECT_EQ(last->crashes.size(), 1U);
  first.reset();
  last.reset();
  EXPECT_FALSE(world.trap->fall(world.crash));
}

TEST(CrashEyeTest, ModelHasTheTextsOfTheInstallation) {
  EyeWorld world;
  const auto delegate = std::make_shared<RecordingDelegate>();
  world.eye.install(delegate);
  world.trap->fall(world.crash);
  world.texts->setSystemVersion("12");
  world.environment->variables["SIMULATOR_MODEL_IDENTIFIER"] = "sim";
  world.eye.install(delegate);
  world.trap->fall({true, "type", "why", "frames", false});
  ASSERT_EQ(delegate->crashes.size(), 2U);
  const CrashModel& first = delegate->crashes[0];
  EXPECT_EQ(first.type, CrashModelType::signal);
  EXPECT_EQ(first.reason, world.crash.reason);
  EXPECT_EQ(first.sdkVer, QuorvanceSDKVersionString);
  EXPECT_EQ(first.devModel, "x86_64");
  EXPECT_EQ(first.callStack, "frame");
  const CrashModel& second = delegate->crashes[1];
  EXPECT_EQ(second.type, CrashModelType::exception);
  EXPECT_EQ(second.iosVer, "12");
  EXPECT_EQ(second.devModel, "sim");
  EXPECT_FALSE(second.isStored);
}

// The first reading of the system may take long; a crash must not wait for it.
TEST(CrashEyeTest, PlanWithoutAVersionIsArmedAnewOnceTheVersionIsKnown) {
  EyeWorld world;
  const auto delegate = std::make_shared<RecordingDelegate>();
  world.eye.install(delegate);
  world.texts->setSystemVersion("12");
  world.texts->setSystemVersion(std::nullopt);
  EXPECT_EQ(world.texts->systemVersion(), "12") << "what is known is not forgotten";
  EXPECT_EQ(world.trap->plans.size(), 2U);
  EXPECT_THAT(world.trap->plans.back().exceptionTemplate.at(1).bytes,
              testing::HasSubstr("\"version\": \"12\""));
  world.trap->fall(world.crash);
  ASSERT_EQ(delegate->crashes.size(), 1U);
  EXPECT_EQ(delegate->crashes[0].iosVer, "12");
}

}  // namespace
}  // namespace quorvance
