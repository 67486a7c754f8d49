#include "c_interface/host_motion.h"

#include <gmock/gmock.h>

#include <limits>
#include <memory>
#include <vector>

#include "platform/testing/manual_executor.h"

namespace quorvance {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto kAccelerometer = MotionSensor::accelerometer;

TEST(HostMotionTest, ASampleGoesToWhoeverHasItsSensorStartedWhenItIsDelivered) {
  const auto time = std::make_shared<ManualExecutor>();
  EXPECT_FALSE(HostMotionSource::deliver(kAccelerometer, {1, 0, 0})) << "nobody wants samples";
  const auto source = std::make_shared<HostMotionSource>(time);
  HostMotionSource::install(source);
  std::vector<double> first;
  std::vector<double> second;
  const auto into = [](std::vector<double>& list) {
    return [&list](const std::optional<MotionSample>& sample) { list.push_back(sample->x); };
  };
  const auto send = [](double x) {
    EXPECT_TRUE(HostMotionSource::deliver(kAccelerometer, {x, 0, 0}));
  };
  const auto manager = source->makeManager();
  auto other = source->makeManager();
  send(1);  // before any start
  manager->startUpdates(kAccelerometer, source->currentQueue(), into(first));
  other->startUpdates(kAccelerometer, source->currentQueue(), into(second));
  other->startUpdates(MotionSensor::gyroscope, source->currentQueue(), into(second));
  send(2);
  send(std::numeric_limits<double>::quiet_NaN());
  EXPECT_THAT(first, IsEmpty()) << "on the queue, not in the call";
  time->run();
  send(3);
  manager->startUpdates(kAccelerometer, source->currentQueue(), into(first));  // drops what waits
  other.reset();
  send(4);
  time->run();
  EXPECT_THAT(first, ElementsAre(2, 4));
  EXPECT_THAT(second, ElementsAre(2));
  send(5);
  manager->stopUpdates(kAccelerometer);
  time->run();
  EXPECT_THAT(first, ElementsAre(2, 4));
}

}  // namespace
}  // namespace quorvance
