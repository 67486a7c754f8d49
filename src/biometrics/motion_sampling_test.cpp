#include "biometrics/motion_sampling.h"

#include <functional>
#include <limits>

#include "biometrics/screen_world_test_support.h"

namespace quorvance {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr MotionSensor kSensors[] = {MotionSensor::accelerometer, MotionSensor::deviceMotion,
                                     MotionSensor::gyroscope, MotionSensor::magnetometer};

std::string sensorRows(ScreenWorld& world) {
  return compactText(*findArray(world.rows().getJson(), "sensorsData"));
}

TEST(MotionSamplingTest, RowsCarryTheLatestValuesInThreeOrders) {
  ScreenWorld world;
  world.begin();
  world.view->touch(GestureState::began, {10, 10});
  world.move(MotionSensor::gyroscope, {0.1, 0.2, 0.3});
  world.move(MotionSensor::accelerometer, {1, 2, 3});
  world.move(MotionSensor::deviceMotion, {4, 5, 6});
  world.move(MotionSensor::accelerometer, {1e16, -0.0, 1e-5});
  EXPECT_EQ(sensorRows(world),
            "[[1.0,2.0,3.0,0.1,0.2,0.3,0.0,0.0,0.0],"
            "[1e+16,-0.0,1e-05,0.1,0.2,0.3,4.0,5.0,6.0]]");
  EXPECT_EQ(compactText(*findArray(world.rows().getJson(), "sensorsTS")), "[[7000],[8000]]");
  EXPECT_THAT(world.recording().sensorsData(),
              ElementsAre("[7000,1.0,2.0,3.0,0.0,0.0,0.0,0.1,0.2,0.3]",
                          "[8000,1e+16,-0.0,1e-05,4.0,5.0,6.0,0.1,0.2,0.3]"));
  EXPECT_EQ(compactText(world.recording().currentTouchSensors(1).at(1)),
            R"({"nanoTimeSensor":8000,"acc_x":1e+16,"acc_y":-0.0,"acc_z":1e-05,"gyro_x":0.1,)"
            R"("gyro_y":0.2,"gyro_z":0.3,"gravity_x":4.0,"gravity_y":5.0,"gravity_z":6.0,)"
            R"("touchId":6000,"pressId":5000,"sessionId":1})");
  std::vector<std::string> raw;
  for (const SensorEvent& event : world.recording().listSensor()) raw.push_back(event.text());
  // The others tell the time of the accelerometer.
  EXPECT_THAT(raw,
              ElementsAre("[0,0.1,0.2,0.3,chb_gyr_unc]", "[7000,1.0,2.0,3.0,chb_lin_acc]",
                          "[7000,4.0,5.0,6.0,chb_gra]", "[8000,1e+16,-0.0,1e-05,chb_lin_acc]"));
}

TEST(MotionSamplingTest, EveryStartBeginsWithZeroesAlsoWhileItRuns) {
  ScreenWorld world;
  world.begin();
  world.listener->resumeListen();
  world.move(MotionSensor::deviceMotion, {4, 5, 6});
  world.noted();
  world.listener->resumeListen();
  EXPECT_THAT(world.noted(),
              ElementsAre("start gravity", "start gyroscope", "start accelerometer"));
  EXPECT_EQ(world.motion->interval(MotionSensor::gyroscope), std::chrono::milliseconds(1));
  world.move(MotionSensor::accelerometer, {1, 2, 3});
  EXPECT_EQ(sensorRows(world), "[[1.0,2.0,3.0,0.0,0.0,0.0,0.0,0.0,0.0]]");
}

TEST(MotionSamplingTest, DebugModeIsAskedByStartForTheSensorAndByRowForItsValues) {
  ScreenWorld world;
  world.begin();
  {
    const DebugLines debug;
    world.listener->resumeListen();
    world.move(MotionSensor::magnetometer, {7, 8, 9});
    world.move(MotionSensor::accelerometer, {1, 2, 3});
    EXPECT_TRUE(debug.contain("[0,7.0,8.0,9.0,mag]"));
    world.listener->pauseListenToSensors();
    EXPECT_EQ(debug.lines().back(), "[[0,7.0,8.0,9.0,mag],[5000,1.0,2.0,3.0,chb_lin_acc]]");
    world.listener->resumeListen();
  }
  world.move(MotionSensor::magnetometer, {7, 8, 9});
  world.move(MotionSensor::accelerometer, {1, 2, 3});
  world.listener->pauseListenToSensors();
  world.listener->resumeListen();
  EXPECT_FALSE(world.motion->isRunning(MotionSensor::magnetometer));
  const DebugLines debug;
  world.move(MotionSensor::accelerometer, {1, 2, 3});
  EXPECT_EQ(sensorRows(world),
            "[[1.0,2.0,3.0,0.0,0.0,0.0,0.0,0.0,0.0,7.0,8.0,9.0],"
            "[1.0,2.0,3.0,0.0,0.0,0.0,0.0,0.0,0.0],"
            "[1.0,2.0,3.0,0.0,0.0,0.0,0.0,0.0,0.0,0.0,0.0,0.0]]");
}

TEST(MotionSamplingTest, MissingSensorsAreSkippedAndWithoutAnAccelerometerThereAreNoRows) {
  ScreenWorld world;
  world.motion->missing = {MotionSensor::gyroscope};
  world.begin();
  world.listener->resumeListen();
  world.move(MotionSensor::accelerometer, {1, 2, 3});
  world.listener->pauseListenToSensors();
  EXPECT_THAT(world.noted(),
              ElementsAre("start gravity", "start accelerometer", "clock", "stop accelerometer",
                          "stop gravity", "stop magnetometer"));
  EXPECT_EQ(sensorRows(world), "[[1.0,2.0,3.0,0.0,0.0,0.0,0.0,0.0,0.0]]");
  ScreenWorld still;
  still.motion->missing = {MotionSensor::accelerometer};
  still.begin();
  still.view->touch(GestureState::began, {10, 10});
  for (const MotionSensor sensor : kSensors) still.move(sensor, {1, 2, 3});
  EXPECT_EQ(sensorRows(still), "[]");
  EXPECT_EQ(still.recording().listSensor().size(), 2U);
}

TEST(MotionSamplingTest, NothingStartsWithoutAQueueOrASource) {
  ScreenWorld world;
  world.motion->hasQueue = false;
  world.begin();
  world.view->touch(GestureState::began, {10, 10});
  EXPECT_FALSE(world.motion->isRunning(MotionSensor::accelerometer));
  world.hasMotion = false;
  world.begin();
  EXPECT_THAT(world.notedOf(GestureState::began), ElementsAre("clock", "clock", "look"));
  world.finish();
}

TEST(MotionSamplingTest, WhatIsNoReadingIsIgnored) {
  ScreenWorld world;
  world.begin();
  world.listener->resumeListen();
  for (const MotionSensor sensor : kSensors) {
    world.motion->deliver(sensor, std::nullopt);
    for (const double value :
         {std::numeric_limits<double>::quiet_NaN(), -std::numeric_limits<double>::infinity()}) {
      world.motion->deliver(sensor, MotionSample{0, value, 0});
    }
  }
  world.time->run();
  EXPECT_THAT(world.recording().listSensor(), IsEmpty());
}

// A manager whose calls run the host's own code, on the calling thread and before they return.
class CallingManager : public MotionManager {
 public:
  std::function<void()> onFirstStart;
  CallList calls;

  bool isAvailable(MotionSensor) override { return true; }
  void setUpdateInterval(MotionSensor, std::chrono::microseconds) override {}
  void startUpdates(MotionSensor, std::shared_ptr<MainQueue>, MotionHandler handler) override {
    calls.emplace_back("start");
    handler(MotionSample{1, 2, 3});
    if (const auto call = std::exchange(onFirstStart, nullptr)) call();
  }
  void stopUpdates(MotionSensor) override { calls.emplace_back("stop"); }
};

class CallingSource : public MotionSource {
 public:
  explicit CallingSource(std::shared_ptr<MainQueue> queue) : queue_(std::move(queue)) {}
  const std::shared_ptr<CallingManager> manager = std::make_shared<CallingManager>();
  std::shared_ptr<MotionManager> makeManager() override { return manager; }
  std::shared_ptr<MainQueue> currentQueue() override { return queue_; }

 private:
  const std::shared_ptr<MainQueue> queue_;
};

TEST(MotionSamplingTest, StopThatMeetsAStartFollowsItWhole) {
  TestWorld world;
  const auto state = std::make_shared<InnerQuorvanceData>(world.time, world.store, world.identity);
  const auto source = std::make_shared<CallingSource>(world.time);
  const auto recording = std::make_shared<ScreenRecording>();
  MotionSampling sampling(source, state, recording);
  source->manager->onFirstStart = [&] { sampling.stop(); };
  sampling.start();
  EXPECT_THAT(source->manager->calls,
              ElementsAre("start", "start", "start", "stop", "stop", "stop", "stop"));
  EXPECT_EQ(recording->counts().motionLines, 1U);
}

}  // namespace
}  // namespace quorvance
