#include <gmock/gmock.h>

#include <fstream>

#include "test/motion/sensor_rows_test_support.h"

namespace quorvance {
namespace {

using testing::DoubleNear;
using testing::Pointwise;

constexpr double kTolerance = 1e-6;

/// A chip that is turned by a quarter about z, beside a compass.
void putSensors(const std::filesystem::path& root) {
  const auto put = [&](const std::string& name, const char* text) {
    const auto file = root / ("sys/bus/iio/devices/iio:device" + name);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << text;
  };
  put("0/in_accel_x_raw", "-1000\n");
  put("0/in_accel_y_raw", "10\n");
  put("0/in_accel_z_raw", "1000\n");
  put("0/in_accel_y_offset", "-10\n");
  put("0/in_accel_scale", "0.00980665\n");
  put("0/in_accel_mount_matrix", "0, 1, 0; -1, 0, 0; 0, 0, 1\n");
  put("0/in_anglvel_x_raw", "250\n");
  put("0/in_anglvel_y_raw", "-100\n");
  put("0/in_anglvel_z_raw", "0\n");
  put("0/in_anglvel_scale", "0.001\n");
  put("1/in_magn_x_raw", "120\n");
  put("1/in_magn_y_raw", "-40\n");
  put("1/in_magn_z_raw", "300\n");
  put("1/in_magn_scale", "0.0015\n");
}

// The kernel tells m/s^2 of what holds the device against gravity, and gauss.
TEST(ScreenWithSensorsTest, FilesOfTheKernelBecomeTheRowsOfTheBody) {
  const RealWorld world;
  const ScratchFolder root;
  putSensors(root.path());
  LinuxPlatformOptions options;
  options.root = root.path();
  options.dataFolder = world.folder.path() + "/data";
  const Platform platform = makeLinuxPlatform(std::move(options));
  EXPECT_THAT(lastRowAtServer(world, platform),
              Pointwise(DoubleNear(kTolerance),
                        {0.0, -1.0, -1.0, 0.25, -0.1, 0.0, 0.0, -1.0, -1.0, 18.0, -6.0, 45.0}));
}

}  // namespace
}  // namespace quorvance
