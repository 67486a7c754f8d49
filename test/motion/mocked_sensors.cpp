// Run under umockdev-run with sensors.umockdev: a handheld as the kernel would show it, tilted
// about its x axis and turning. A second accelerometer sits in its base.

#include <gmock/gmock.h>

#include "test/motion/sensor_rows_test_support.h"

namespace quorvance {
namespace {

using testing::DoubleNear;
using testing::Pointwise;

constexpr double kTolerance = 1e-6;

// raw (-2058 + 10, 0, 4106 - 10) is (-0.5, 0, 1) g; a quarter turn of the chip makes it
// (0, 0.5, 1), and the seam counts the other way.
TEST(MockedSensorsTest, BecomeTheRowsOfTheBody) {
  const RealWorld world;
  EXPECT_THAT(lastRowAtServer(world, world.platform()),
              Pointwise(DoubleNear(kTolerance), {0.0, -0.5, -1.0, 1.065264, -0.532632, 0.0, 0.0,
                                                 -0.5, -1.0, 18.0, -6.0, 48.0}));
}

}  // namespace
}  // namespace quorvance
