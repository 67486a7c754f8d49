#include <gmock/gmock.h>

#include <future>
#include <thread>

#include "core/manager_core.h"
#include "platform/testing/fake_crash_trap.h"
#include "platform/testing/test_world.h"
#include "quorvance/account_check_points.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;

constexpr const char* kTracesPath = "qrsk-med/3.0/TracingData/";

struct CountedSystem : FakeFacts<SystemFacts> {
  int reads = 0;
  SystemFacts read() override {
    ++reads;
    return FakeFacts::read();
  }
};

/// A manager whose fact lane never comes to its work.
struct UnreadWorld : TestWorld {
  std::shared_ptr<CountedSystem> counted = std::make_shared<CountedSystem>();
  std::shared_ptr<FakeCrashTrap> trap = std::make_shared<FakeCrashTrap>();
  std::shared_ptr<Context> context;
  std::shared_ptr<ManagerCore> manager;

  UnreadWorld() {
    counted->facts.systemVersion = "12";
    system = counted;
    Platform platform = this->platform();
    platform.crashTrap = trap;
    context = std::make_shared<Context>(platform);
    manager = ManagerCore::make(context);
    time->hold(WorkLane::facts);
  }
};

TEST(ErrorVersionsTest, FirstReportOfAFailedCallHasTheSystemsVersion) {
  UnreadWorld world;
  world.http->answer("qrsk-med/3.0/GetCheckpointRisk/", refusedReply());
  world.manager->configureServerUrl("http://risk.test/");
  world.manager->getRiskForCheckPoint(Launch(), nullptr);
  EXPECT_EQ(world.counted->reads, 0) << "on the host's thread";
  world.time->run();
  ASSERT_EQ(world.documents->count("communicationError"), 1U);
  const Json report = *parseJson(world.documents->files.begin()->second);
  EXPECT_EQ(report.value("version", "none"), "12");
}

// As the device's facts have it.
TEST(ErrorVersionsTest, AVersionThatNobodyCanReadIsNone) {
  UnreadWorld world;
  world.counted->facts.systemVersion = "12\x1b[2J";
  EXPECT_EQ(world.context->texts->readSystemVersion(), std::nullopt);
}

/// Another thread reads the system for longer than anybody waits.
TEST(ErrorVersionsTest, FactsThatSomebodyElseIsReadingAreAskedForAgain) {
  struct SlowSystem : FakeFacts<SystemFacts> {
    std::promise<void> entered;
    std::promise<void> mayEnd;
    SystemFacts read() override {
      entered.set_value();
      mayEnd.get_future().wait();
      return FakeFacts::read();
    }
  };
  const auto slow = std::make_shared<SlowSystem>();
  slow->facts.systemVersion = "12";
  TestWorld world;
  Platform platform = world.platform();
  platform.facts.system = slow;
  const Context context(platform);
  std::thread other([&] { context.texts->readSystemVersion(); });
  slow->entered.get_future().wait();
  const auto versionInBody = [&] {
    context.deviceData->whenConfigurationBodyIsReady([] {});
    world.time->run();
    return context.deviceData->configurationBody().value("iosVersion", "none");
  };
  EXPECT_EQ(versionInBody(), "none");
  slow->mayEnd.set_value();
  other.join();
  EXPECT_EQ(versionInBody(), "12");
  EXPECT_EQ(context.texts->systemVersion(), "12");
}

TEST(ErrorVersionsTest, ExceptionOfTheHostGetsTheVersionWhenItIsSent) {
  UnreadWorld world;
  world.manager->configureServerUrl("http://risk.test/");
  world.context->exceptions->logException({"disk", 28, "No space left", std::nullopt});
  world.manager->sendingTracingData();
  EXPECT_EQ(world.counted->reads, 0) << "on the host's thread";
  world.time->advance(30s);
  const auto sent = world.http->sentTo(kTracesPath);
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_EQ(textOf(sent[0].body["tracingData"][0]),
            R"({"error_stack":"No space left","version":"12","device_model":"x86_64",)"
            R"("sdk_version":"1.0.0","error_type":"disk","error_code":28,)"
            R"("error_timestamp":1700000000000})");
}

TEST(ErrorVersionsTest, CrashPlanBeforeAllFactsHasTheVersion) {
  UnreadWorld world;
  world.http->answer("qrsk-med/3.0/getSdkConfiguration/", okReply(R"({"enable_crash_eye": true})"));
  world.manager->setup("http://risk.test/", "u1", nullptr);
  world.time->advance(2s);
  ASSERT_EQ(world.trap->plans.size(), 1U);
  EXPECT_THAT(world.trap->plans[0].exceptionTemplate.at(1).bytes,
              testing::HasSubstr("\"version\": \"12\""));
  world.time->release(WorkLane::facts);
  world.time->run();
  EXPECT_EQ(world.trap->plans.size(), 1U);
}

}  // namespace
}  // namespace quorvance
