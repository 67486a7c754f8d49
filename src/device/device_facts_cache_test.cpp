#include "device/device_facts_cache.h"

#include <gtest/gtest.h>

#include "platform/testing/test_world.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;

struct FactsWorld : TestWorld {
  FactsWorld() { network->facts.radioTechnology = "LTE"; }
  std::shared_ptr<SystemTexts> texts = std::make_shared<SystemTexts>(environment);
  std::shared_ptr<DeviceFactsCache> cache = std::make_shared<DeviceFactsCache>(platform(), texts);
};

TEST(DeviceFactsCacheTest, TheFirstStepReadsTheSystemAlone) {
  FactsWorld world;
  int runs = 0;
  world.cache->whenSystemKnown([&] {
    ++runs;
    EXPECT_EQ(world.cache->snapshot()->system.systemVersion, "12");
    EXPECT_EQ(world.texts->systemVersion(), "12");
  });
  EXPECT_EQ(runs, 0) << "inside the call";
  world.time->run();
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(world.cache->snapshot()->network.radioTechnology, std::nullopt);
  world.time->advance(10s);
  EXPECT_EQ(runs, 1) << "once more when patience ended";
}

TEST(DeviceFactsCacheTest, AWholeRefreshReadsTheRestAnewAndLeavesOlderSnapshotsAlone) {
  FactsWorld world;
  world.cache->whenRefreshed([] {});
  world.time->run();
  const auto before = world.cache->snapshot();
  EXPECT_EQ(before->system.systemVersion, "12");
  EXPECT_EQ(before->network.radioTechnology, "LTE");
  world.network->facts.radioTechnology = "Edge";
  world.cache->whenRefreshed([] {});
  world.time->run();
  EXPECT_EQ(world.cache->snapshot()->network.radioTechnology, "Edge");
  EXPECT_EQ(world.cache->snapshot()->system.systemVersion, "12");
  EXPECT_EQ(before->network.radioTechnology, "LTE");
}

TEST(DeviceFactsCacheTest, ATaskWaitsTwoSecondsForFactsThatHang) {
  for (const bool isWhole : {false, true}) {
    FactsWorld world;
    int runs = 0;
    world.time->hold(WorkLane::facts);
    isWhole ? world.cache->whenRefreshed([&] { ++runs; })
            : world.cache->whenSystemKnown([&] { ++runs; });
    world.time->advance(1999ms);
    EXPECT_EQ(runs, 0);
    world.time->advance(1ms);
    EXPECT_EQ(runs, 1);
    world.time->release(WorkLane::facts);
    world.time->run();
    EXPECT_EQ(runs, 1) << "again when the facts came";
    EXPECT_EQ(world.cache->snapshot()->system.systemVersion, "12");
  }
}

TEST(DeviceFactsCacheTest, TasksRunAmongTheCompletions) {
  FactsWorld world;
  int runs = 0;
  world.time->hold(WorkLane::completions);
  world.cache->whenSystemKnown([&] { ++runs; });
  world.cache->whenRefreshed([&] { ++runs; });
  world.time->advance(5s);
  EXPECT_EQ(runs, 0);
  EXPECT_EQ(world.cache->snapshot()->network.radioTechnology, "LTE");
  world.time->release(WorkLane::completions);
  world.time->run();
  EXPECT_EQ(runs, 2);
}

TEST(DeviceFactsCacheTest, MissingSourcesAnswerUnknown) {
  TestWorld world;
  Platform seam;
  seam.mainQueue = world.time;
  seam.backgroundQueue = world.time;
  const auto cache =
      std::make_shared<DeviceFactsCache>(seam, std::make_shared<SystemTexts>(world.environment));
  int runs = 0;
  cache->whenRefreshed([&] { ++runs; });
  world.time->run();
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(cache->snapshot()->system.model, std::nullopt);
}

}  // namespace
}  // namespace quorvance
