// What a screen costs: aim at most 1 us for one accelerometer sample, whole, and for a touch sample
// on a screen of 50 subviews. The largest body is compared with its numbers alone.

#include <benchmark/benchmark.h>

#include <memory>
#include <thread>
#include <vector>

#include "base/json.h"
#include "base/text.h"
#include "biometrics/screen_recording.h"
#include "core/context.h"
#include "core/manager_core.h"
#include "platform/testing/fake_view.h"
#include "platform/testing/test_world.h"
#include "quorvance/platform/linux_platform.h"

namespace quorvance {
namespace {

constexpr int kSubviews = 50;
// Rows are recorded in a listener of their own until it is full.
constexpr int kTouchesOfAListener = 390;
constexpr int kSamplesOfAListener = 10'000;

// Keeps the handlers, so that nothing but the library stands between a sample and its row.
class HandedMotion : public MotionSource,
                     public MotionManager,
                     public std::enable_shared_from_this<HandedMotion> {
 public:
  explicit HandedMotion(std::shared_ptr<MainQueue> queue) : queue_(std::move(queue)) {}
  std::shared_ptr<MotionManager> makeManager() override { return shared_from_this(); }
  std::shared_ptr<MainQueue> currentQueue() override { return queue_; }
  bool isAvailable(MotionSensor) override { return true; }
  void setUpdateInterval(MotionSensor, std::chrono::microseconds) override {}
  void startUpdates(MotionSensor sensor, std::shared_ptr<MainQueue>,
                    MotionHandler handler) override {
    if (sensor == MotionSensor::accelerometer) acceleration = std::move(handler);
  }
  void stopUpdates(MotionSensor) override {}

  MotionHandler acceleration;

 private:
  const std::shared_ptr<MainQueue> queue_;
};

// A host has other threads. Reference counts are only atomic once there is one.
void haveAnotherThread() {
  static const bool isThere = [] {
    std::thread([] {}).join();
    return true;
  }();
  benchmark::DoNotOptimize(isThere);
}

// A manager over doubles, save the clock, whose reading is a part of the cost.
struct WatchedScreen {
  WatchedScreen() {
    haveAnotherThread();
    for (int i = 0; i < kSubviews; ++i) view->add({0, 16.0 * i, 390, 16});
    Platform platform = world.platform();
    platform.clock = makeLinuxPlatform().clock;
    platform.motion = motion;
    const auto context = std::make_shared<Context>(std::move(platform));
    SdkConfig config;
    config.enableBioCollection = true;
    context->state->replaceSdkConfig(config);
    manager = ManagerCore::make(context);
    begin();
  }

  void begin() {
    view->recognizers.clear();
    listener = manager->startNewScreenListener(ScreenListenerType::PINCODE, 1, view);
    view->touch(GestureState::began, {1, 1});
  }

  TestWorld world;
  std::shared_ptr<HandedMotion> motion = std::make_shared<HandedMotion>(world.time);
  std::shared_ptr<FakeView> view = std::make_shared<FakeView>(ViewFrame{0, 0, 390, 844});
  std::shared_ptr<ManagerCore> manager;
  std::shared_ptr<QuorvanceScreenListener> listener;
};

// Under the last of the subviews, so that all of them are looked at.
void touchSample(benchmark::State& state) {
  WatchedScreen screen;
  int left = kTouchesOfAListener;
  for (auto _ : state) {
    screen.view->touch(GestureState::changed, {100, 799});
    if (--left > 0) continue;
    state.PauseTiming();
    screen.begin();
    left = kTouchesOfAListener;
    state.ResumeTiming();
  }
}
BENCHMARK(touchSample);

void accelerometerSample(benchmark::State& state) {
  WatchedScreen screen;
  int left = kSamplesOfAListener;
  for (auto _ : state) {
    screen.motion->acceleration(MotionSample{0.0123, -0.4567, -0.8901});
    if (--left > 0) continue;
    state.PauseTiming();
    screen.begin();
    left = kSamplesOfAListener;
    state.ResumeTiming();
  }
}
BENCHMARK(accelerometerSample);

// 400 text lines: the most that touches let a screen grow to, three quarters of it motion.
BioSensorEventData fullScreen() {
  ScreenRecording recording;
  LatestMotion latest;
  double value = 0.1;
  const auto sample = [&value] {
    value += 0.0137;
    return MotionSample{value, -value / 3, value / 7};
  };
  for (int i = 0; i < 100; ++i) {
    const TouchRow touch{3 * value, 5 * value, 8.25 + value, value / 9, TouchAction::move};
    recording.addTouch(touch);
    recording.addTouchEvent(makeTouchEvent(touch, 1'700'000'000'000 + i, 59000));
    for (int j = 0; j < 3; ++j) {
      recording.addSample(latest, SensorType::chb_gra, sample());
      recording.addSample(latest, SensorType::chb_gyr_unc, sample());
      recording.addMotion(latest, 1'700'000'000'000 + 10 * i + j, sample(), false);
    }
  }
  recording.takeSnapshot();
  return *recording.takeSnapshotRows({ScreenListenerType::PINCODE, 1});
}

void largestBodyBuilt(benchmark::State& state) {
  const BioSensorEventData data = fullScreen();
  for (auto _ : state) benchmark::DoNotOptimize(data.getJson());
}
BENCHMARK(largestBodyBuilt);

void largestBodySerialised(benchmark::State& state) {
  const Json body = fullScreen().getJson();
  std::size_t bytes = 0;
  for (auto _ : state) bytes = writeJson(body)->size();
  state.counters["bytes"] = static_cast<double>(bytes);
}
BENCHMARK(largestBodySerialised);

// The floor: its doubles as text, nothing around them.
void largestBodyNumbersAlone(benchmark::State& state) {
  const BioSensorEventData data = fullScreen();
  for (auto _ : state) {
    for (const TouchRow& touch : *data.eventList) {
      for (const double value : {touch.x, touch.y, touch.size, touch.pressure}) {
        benchmark::DoNotOptimize(textOf(value));
      }
    }
    for (const MotionRow& row : *data.sensorsData) {
      for (const MotionSample& of : {row.acceleration, row.rotation, row.gravity}) {
        for (const double value : {of.x, of.y, of.z}) benchmark::DoNotOptimize(textOf(value));
      }
    }
  }
}
BENCHMARK(largestBodyNumbersAlone);

// On the host's thread, or on its main queue: what finishing costs before the background takes the
// rows over.
void snapshotOfTheLargest(benchmark::State& state) {
  ScreenRecording recording;
  LatestMotion latest;
  for (int i = 0; i < 300; ++i) recording.addMotion(latest, i, {}, false);
  for (auto _ : state) {
    recording.takeSnapshot();
    benchmark::DoNotOptimize(recording.takeSnapshotRows({ScreenListenerType::PINCODE, 1}));
  }
}
BENCHMARK(snapshotOfTheLargest);

}  // namespace
}  // namespace quorvance
