// What the device part of a payload costs once the facts are cached: aim at most 200 us for the
// three snapshots of a session, at most 20 us for a checkpoint's additional data.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "device/device_data_manager.h"
#include "platform/testing/test_world.h"
#include "quorvance/platform/linux_platform.h"
#include "state/system_facts_reader.h"

namespace quorvance {
namespace {

/// As many faces as a desktop has, four a family.
FontFacts fontsOf(int faces) {
  FontFacts fonts;
  for (int i = 0; i < faces; ++i) {
    const std::string family = "Family of fonts " + std::to_string(i / 4);
    if (i % 4 == 0) fonts.familyNames.push_back(family);
    fonts.fontsByFamily[family].push_back("FamilyOfFonts-" + std::to_string(i));
  }
  return fonts;
}

struct CollectorWorld : TestWorld {
  explicit CollectorWorld(int faces = 22) {
    system->facts = {"12",    "Sys", "Model-1", "handset",       "Handset", "My phone", 0,
                     "de_DE", "DE",  "de",      "Europe/Berlin", 2 << 20,   true};
    screen->facts = {411.9, 731.4, 1080.0, 1920.0};
    network->facts = {"LTE", false, true, "262", "01", "Carrier", "DE"};
    authorization->answers = {{AuthorizationSubject::location, AuthorizationStatus::authorized},
                              {AuthorizationSubject::camera, AuthorizationStatus::authorized}};
    location->fix = LocationFix{34.5, 52.5, 13.4, 25.0};
    Platform seam = platform();
    const auto fonts = std::make_shared<FakeFacts<FontFacts>>();
    fonts->facts = fontsOf(faces);
    seam.facts.fonts = fonts;
    use(seam);
    time->run();
  }

  void use(const Platform& seam) {
    const auto state =
        std::make_shared<InnerQuorvanceData>(seam.clock, seam.defaults, seam.identity);
    const auto texts = std::make_shared<SystemTexts>(environment);
    facts = std::make_shared<DeviceFactsCache>(
        seam, texts, std::make_shared<SystemFactsReader>(seam.facts.system));
    facts->refresh();
    collector.emplace(seam, state);
    manager.emplace(seam, state, texts, std::make_shared<SystemFactsReader>(seam.facts.system));
  }

  std::shared_ptr<DeviceFactsCache> facts;
  std::optional<DeviceDataCollector> collector;
  std::optional<DeviceDataManager> manager;
};

void sessionSnapshots(benchmark::State& state) {
  const CollectorWorld world(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    const auto facts = world.facts->snapshot();
    benchmark::DoNotOptimize(world.collector->deviceDataJson(*facts));
    benchmark::DoNotOptimize(world.collector->settingDataJson(*facts));
    benchmark::DoNotOptimize(world.collector->simDataJson(*facts));
  }
}
BENCHMARK(sessionSnapshots)->ArgName("faces")->Arg(22)->Arg(240)->Arg(2000);

void additionalData(benchmark::State& state) {
  CollectorWorld world;
  for (auto _ : state) benchmark::DoNotOptimize(world.manager->buildAdditionalData());
}
BENCHMARK(additionalData);

/// Of this machine, by the real sources.
void additionalDataOnLinux(benchmark::State& state) {
  const auto folder = std::filesystem::temp_directory_path() / "quorvance-device-benchmark";
  {
    LinuxPlatformOptions options;
    options.dataFolder = folder.string();
    CollectorWorld world;
    const Platform platform = makeLinuxPlatform(options);
    world.use(platform);
    for (auto _ : state) benchmark::DoNotOptimize(world.manager->buildAdditionalData());
  }
  std::error_code ignored;  // what cannot be removed measures nothing
  std::filesystem::remove_all(folder, ignored);
}
BENCHMARK(additionalDataOnLinux);

}  // namespace
}  // namespace quorvance
