// Run under umockdev-run with sensors.umockdev: a handheld as the kernel would show it, tilted
// about its x axis and turning. A second accelerometer sits in its base.

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <optional>
#include <utility>

#include "quorvance/platform/linux_platform.h"

namespace quorvance {
namespace {

constexpr std::chrono::seconds kLongest{30};

class MockedSensorsTest : public testing::TestWithParam<std::pair<MotionSensor, MotionSample>> {};

TEST_P(MockedSensorsTest, ComeThroughThePlatformInTheUnitsOfTheSeam) {
  const auto& [sensor, expected] = GetParam();
  // Destroyed after the platform's queue, on which a handler may be running.
  std::promise<MotionSample> first;
  bool isFirst = true;
  const Platform platform = makeLinuxPlatform();
  const auto manager = platform.motion->makeManager();
  manager->setUpdateInterval(sensor, std::chrono::microseconds(1000));
  manager->startUpdates(sensor, platform.motion->currentQueue(),
                        [&](const std::optional<MotionSample>& sample) {
                          if (std::exchange(isFirst, false)) first.set_value(sample.value());
                        });
  std::future<MotionSample> future = first.get_future();
  ASSERT_EQ(future.wait_for(kLongest), std::future_status::ready);
  const MotionSample sample = future.get();
  EXPECT_NEAR(sample.x, expected.x, 1e-6);
  EXPECT_NEAR(sample.y, expected.y, 1e-6);
  EXPECT_NEAR(sample.z, expected.z, 1e-6);
  EXPECT_TRUE(manager->isAvailable(sensor));
}

// raw (-2058 + 10, 0, 4106 - 10) is (-0.5, 0, 1) g; a quarter turn of the chip makes it
// (0, 0.5, 1), and the seam counts the other way.
INSTANTIATE_TEST_SUITE_P(
    All, MockedSensorsTest,
    testing::Values(std::pair(MotionSensor::accelerometer, MotionSample{0, -0.5, -1}),
                    std::pair(MotionSensor::deviceMotion, MotionSample{0, -0.5, -1}),
                    std::pair(MotionSensor::gyroscope, MotionSample{1.065264, -0.532632, 0}),
                    std::pair(MotionSensor::magnetometer, MotionSample{18, -6, 48})));

}  // namespace
}  // namespace quorvance
