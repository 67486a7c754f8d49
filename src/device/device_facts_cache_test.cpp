#include "device/device_facts_cache.h"

#include <gtest/gtest.h>

#include <new>

#include "platform/testing/test_world.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;

struct FactsWorld : TestWorld {
  FactsWorld() { network->facts.radioTechnology = "LTE"; }
  std::shared_ptr<SystemTexts> texts = std::make_shared<SystemTexts>(environment);
  std::shared_ptr<DeviceFactsCache> cache = cacheOver(platform());

  std::shared_ptr<DeviceFactsCache> cacheOver(const Platform& seam) const {
    return std::make_shared<DeviceFactsCache>(
        seam, texts, std::make_shared<SystemFactsReader>(seam.facts.system));
  }
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
  EXPECT_EQ(runs, 1) << "once more after the timeout";
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

class CountedPosture : public FactSource<PostureFacts> {
 public:
  int reads = 0;
  PostureFacts read() override {
    ++reads;
    return {};
  }
};

TEST(DeviceFactsCacheTest, BatteryAndPostureAreNotEvenReadInProduction) {
  FactsWorld world;
  const auto posture = std::make_shared<CountedPosture>();
  Platform seam = world.platform();
  seam.facts.posture = posture;
  const auto cache = world.cacheOver(seam);
  world.power->battery = {0.5F, 2};
  cache->refresh();
  world.time->run();
  EXPECT_EQ(posture->reads, 0);
  EXPECT_EQ(cache->snapshot()->power.battery.level, std::nullopt);
  const DebugLines debug;
  for (const std::optional<bool> found : {std::optional<bool>(false), {true}, {}}) {
    world.power->isOn = found;
    cache->refresh();
    world.time->run();
    const PowerFacts power = cache->snapshot()->power;
    EXPECT_EQ(power.battery.level, 0.5F);
    EXPECT_EQ(power.isMonitoringEnabled, found);
    EXPECT_EQ(world.power->isOn, found) << "left as it was found";
  }
  EXPECT_EQ(posture->reads, 3);
}

// The user may travel, and name the device anew, while the application runs.
TEST(DeviceFactsCacheTest, SettingsOfTheUserAreReadAnewAndTheMachineOnce) {
  FactsWorld world;
  SystemFacts& told = world.system->facts;
  told.model = "M1";
  told.timeZone = "Europe/Berlin";
  world.cache->refresh();
  world.time->run();
  told.systemVersion = "13";
  told.model = "M2";
  told.deviceName = "Mine";
  told.locale = "fr_CH";
  told.region = "CH";
  told.language = "fr";
  told.timeZone = "Europe/Zurich";
  world.cache->whenSystemKnown(nullptr);
  world.time->run();
  EXPECT_EQ(world.cache->snapshot()->system.timeZone, "Europe/Berlin") << "a whole refresh alone";
  world.cache->refresh();
  world.time->run();
  const SystemFacts system = world.cache->snapshot()->system;
  EXPECT_EQ(system.timeZone, "Europe/Zurich");
  EXPECT_EQ(system.deviceName, "Mine");
  EXPECT_EQ(system.locale, "fr_CH");
  EXPECT_EQ(system.region, "CH");
  EXPECT_EQ(system.language, "fr");
  EXPECT_EQ(system.model, "M1");
  EXPECT_EQ(system.systemVersion, "12");
  EXPECT_EQ(world.texts->systemVersion(), "12");
}

TEST(DeviceFactsCacheTest, ABatteryWhoseReadingFindsNoMemoryIsLeftAsItWas) {
  class FailingPower : public FakePower {
   public:
    BatteryReading read() override { throw std::bad_alloc(); }
  };
  FactsWorld world;
  const auto power = std::make_shared<FailingPower>();
  world.power = power;
  const DebugLines debug;
  world.cache = world.cacheOver(world.platform());
  world.cache->refresh();
  world.time->run();
  EXPECT_EQ(power->isOn, false);
}

// The cache is asked by a source that comes later, as by a payload whose timeout comes meanwhile.
TEST(DeviceFactsCacheTest, AGroupThatHangsKeepsNothingBackThatWasReadBefore) {
  class LateFonts : public FactSource<FontFacts> {
   public:
    FontFacts read() override {
      seen = *cache.lock()->snapshot();
      return {};
    }
    std::weak_ptr<DeviceFactsCache> cache;
    DeviceFacts seen;
  };
  FactsWorld world;
  const auto fonts = std::make_shared<LateFonts>();
  Platform seam = world.platform();
  seam.facts.fonts = fonts;
  const auto cache = world.cacheOver(seam);
  fonts->cache = cache;
  world.screen->facts.nativeWidth = 1080.0;
  cache->refresh();
  world.time->run();
  EXPECT_EQ(fonts->seen.network.radioTechnology, "LTE");
  EXPECT_EQ(fonts->seen.screen.nativeWidth, 1080.0);
  EXPECT_EQ(fonts->seen.system.systemVersion, "12");
}

TEST(DeviceFactsCacheTest, AChangeOfTheNetworkHasItsFactsReadAgain) {
  FactsWorld world;
  world.cache->refresh();
  world.time->run();
  world.cache->refresh();
  world.time->run();
  EXPECT_EQ(world.reachability->listeners(), 1U);
  world.network->facts.radioTechnology = "Edge";
  world.screen->facts.nativeWidth = 1080.0;
  world.reachability->change(NetworkKind::wwan);
  world.reachability->change(NetworkKind::wlan);
  EXPECT_EQ(world.time->waiting(), 1U) << "changes made while one waits share its reading";
  world.time->run();
  EXPECT_EQ(world.cache->snapshot()->network.radioTechnology, "Edge");
  EXPECT_EQ(world.cache->snapshot()->screen.nativeWidth, std::nullopt) << "the network alone";
  world.cache.reset();
  world.reachability->change(NetworkKind::none);
}

TEST(DeviceFactsCacheTest, TextThatNobodyCanReadIsAbsentWhoeverToldIt) {
  FactsWorld world;
  for (const std::string rubbish : {"", "\x1b[2J", "\xff", "a\nb"}) {
    SystemFacts& system = world.system->facts;
    system.model = system.deviceName = system.kindModel = system.systemVersion = rubbish;
    world.network->facts.carrierName = rubbish;
    const auto cache = world.cacheOver(world.platform());
    cache->refresh();
    world.time->run();
    const auto facts = cache->snapshot();
    EXPECT_EQ(facts->system.model, "x86_64");
    EXPECT_EQ(facts->system.kindModel, "computer");
    EXPECT_EQ(facts->system.deviceName, std::nullopt);
    EXPECT_EQ(world.texts->systemVersion(), std::nullopt);
    EXPECT_EQ(facts->network.carrierName, std::nullopt);
  }
}

TEST(DeviceFactsCacheTest, MissingSourcesAnswerUnknown) {
  FactsWorld world;
  Platform seam;
  seam.mainQueue = world.time;
  seam.backgroundQueue = world.time;
  const auto cache = world.cacheOver(seam);
  int runs = 0;
  cache->whenRefreshed([&] { ++runs; });
  world.time->run();
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(cache->snapshot()->system.deviceName, std::nullopt);
  EXPECT_EQ(cache->snapshot()->system.model, "x86_64");
}

}  // namespace
}  // namespace quorvance
