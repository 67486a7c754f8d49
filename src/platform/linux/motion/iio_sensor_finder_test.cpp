#include "platform/linux/motion/iio_sensor_finder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <filesystem>
#include <functional>
#include <map>
#include <string>

#include "platform/testing/temporary_folder_test_support.h"

namespace quorvance {
namespace {

using Files = std::map<std::string, std::string>;

constexpr double kTolerance = 1e-9;

class IioSensorFinderTest : public testing::Test {
 protected:
  std::string device(int number) const {
    return "sys/bus/iio/devices/iio:device" + std::to_string(number);
  }
  void put(int number, const Files& files) const {
    for (const auto& [name, text] : files) root_.put(device(number) + "/" + name, text);
  }
  void remove(int number) const { std::filesystem::remove_all(root_.at(device(number))); }
  std::shared_ptr<SensorReader> find(SensorKind kind = SensorKind::accelerometer) const {
    return IioSensorFinder(RootFiles(root_.path())).find(kind);
  }
  std::optional<MotionSample> read(SensorKind kind = SensorKind::accelerometer) const {
    const auto sensor = find(kind);
    return sensor ? sensor->read() : std::nullopt;
  }

  TemporaryFolder root_;
};

/// Reads (1, 2, 3) before anything is done about offsets, scales and mounting.
const Files kRotation = {
    {"in_anglvel_x_raw", "1\n"}, {"in_anglvel_y_raw", "2\n"}, {"in_anglvel_z_raw", "3\n"}};

Files with(Files files, const Files& more) {
  for (const auto& [name, text] : more) files.insert_or_assign(name, text);
  return files;
}

void expectSample(const std::optional<MotionSample>& sample, double x, double y, double z,
                  const std::string& what) {
  ASSERT_TRUE(sample) << what;
  EXPECT_NEAR(sample->x, x, kTolerance) << what;
  EXPECT_NEAR(sample->y, y, kTolerance) << what;
  EXPECT_NEAR(sample->z, z, kTolerance) << what;
}

TEST_F(IioSensorFinderTest, ReadsEachKindInTheUnitsAndSignsOfTheSeam) {
  struct Case {
    SensorKind kind;
    std::string channel;
    double unit;  // of one unit of the kernel in the seam's
  };
  const Case cases[] = {
      {SensorKind::accelerometer, "in_accel", -1 / 9.80665},
      {SensorKind::gravity, "in_gravity", -1 / 9.80665},
      {SensorKind::gyroscope, "in_anglvel", 1},
      {SensorKind::magnetometer, "in_magn", 100},
  };
  int number = 0;
  for (const Case& c : cases) {
    EXPECT_FALSE(find(c.kind)) << c.channel;
    put(number++, {{c.channel + "_x_raw", "0\n"},
                   {c.channel + "_y_raw", "200\n"},
                   {c.channel + "_z_raw", "1000\n"},
                   {c.channel + "_scale", "0.002000\n"}});
    const auto sample = read(c.kind);
    expectSample(sample, 0, 0.4 * c.unit, 2 * c.unit, c.channel);
    EXPECT_FALSE(std::signbit(sample->x)) << "a turned zero is no negative zero";
  }
}

TEST_F(IioSensorFinderTest, WhatChannelsShareStandsInOneFile) {
  struct Case {
    Files files;
    double x, y, z;
  };
  const Case cases[] = {
      {{}, 1, 2, 3},
      {{{"in_anglvel_scale", "10"}}, 10, 20, 30},
      {{{"scale", "10"}}, 10, 20, 30},
      {{{"in_anglvel_scale", "10"}, {"in_anglvel_y_scale", "-1"}, {"scale", "7"}}, 10, -2, 30},
      {{{"in_anglvel_offset", "5"}}, 6, 7, 8},
      {{{"in_anglvel_z_offset", "-3"}, {"in_anglvel_scale", "2"}}, 2, 4, 0},
      {{{"in_accel_scale", "9"}, {"out_scale", "9"}}, 1, 2, 3},
  };
  for (const Case& c : cases) {
    remove(0);
    put(0, with(kRotation, c.files));
    expectSample(read(SensorKind::gyroscope), c.x, c.y, c.z,
                 c.files.empty() ? "none" : c.files.begin()->first);
  }
}

TEST_F(IioSensorFinderTest, TurnsByTheMountMatrixUnlessItIsNone) {
  struct Case {
    std::string name, text;
    double x, y, z;
  };
  const Case cases[] = {
      {"in_anglvel_mount_matrix", "0, 1, 0; -1, 0, 0; 0, 0, 1\n", 2, -1, 3},
      {"in_mount_matrix", "-1,0,0;0,-1,0;0,0,1", -1, -2, 3},
      {"mount_matrix", "0.7071, 0.7071, 0; -0.7071, 0.7071, 0; 0, 0, 1", 2.1213, 0.7071, 3},
      {"mount_matrix", "2, 0, 0; 0, 2, 0; 0, 0, 2", 1, 2, 3},
      {"mount_matrix", "1, 0, 0; 1, 0, 0; 0, 0, 1", 1, 2, 3},
      {"mount_matrix", "-1, 0, 0; 0, -1, 0", 1, 2, 3},
      {"mount_matrix", "-1, 0, 0, 0; 0, -1, 0; 0, 0, 1", 1, 2, 3},
      {"mount_matrix", "-1, 0, nan; 0, -1, 0; 0, 0, 1", 1, 2, 3},
      {"in_accel_mount_matrix", "-1, 0, 0; 0, -1, 0; 0, 0, 1", 1, 2, 3},
  };
  for (const Case& c : cases) {
    remove(0);
    put(0, with(kRotation, {{c.name, c.text}}));
    expectSample(read(SensorKind::gyroscope), c.x, c.y, c.z, c.name + " = " + c.text);
  }
}

// Each device reads its own number.
TEST_F(IioSensorFinderTest, OfSeveralDevicesTheDisplaysIsTaken) {
  struct Case {
    std::map<int, Files> devices;
    double taken;
  };
  const Case cases[] = {
      {{{10, {}}, {2, {}}}, 2},
      {{{0, {{"label", "accel-base\n"}}}, {1, {{"label", "accel-display\n"}}}}, 1},
      {{{0, {{"location", "base\n"}}}, {3, {{"location", "lid\n"}}}}, 3},
      {{{0, {{"label", "accel-camera"}}}, {1, {{"location", "base"}}}}, 0},
      {{{0, {{"in_accel_scale", "rubbish"}, {"label", "accel-display"}}}, {1, {}}}, 1},
  };
  for (const Case& c : cases) {
    std::filesystem::remove_all(root_.at("sys"));
    for (const auto& [number, files] : c.devices) {
      const std::string raw = std::to_string(number);
      put(number, with(files, {{"in_accel_x_raw", raw},
                               {"in_accel_y_raw", "0"},
                               {"in_accel_z_raw", "0"},
                               {"in_accel_offset", "0"}}));
    }
    expectSample(read(), -c.taken / 9.80665, 0, 0, "of " + std::to_string(c.devices.size()));
  }
}

TEST_F(IioSensorFinderTest, TheRateIsTheDevicesOwnWithinReason) {
  const std::pair<Files, int> cases[] = {
      {{}, 10'000},
      {{{"in_anglvel_sampling_frequency", "50.000000\n"}, {"sampling_frequency", "10"}}, 20'000},
      {{{"sampling_frequency", "104"}}, 9'615},
      {{{"sampling_frequency", "3200"}}, 5'000},
      {{{"sampling_frequency", "1"}}, 1'000'000},
      {{{"sampling_frequency", "0.001"}}, 10'000},
      {{{"sampling_frequency", "fast"}}, 10'000},
  };
  for (const auto& [files, microseconds] : cases) {
    remove(0);
    put(0, with(kRotation, files));
    ASSERT_TRUE(find(SensorKind::gyroscope));
    EXPECT_EQ(find(SensorKind::gyroscope)->shortestInterval().count(), microseconds);
  }
}

TEST_F(IioSensorFinderTest, AFileThatDescribesNothingMakesTheDeviceNone) {
  const auto expectNone = [&](const std::string& damage, const std::function<void()>& make) {
    std::filesystem::remove_all(root_.at("sys"));
    put(0, kRotation);
    ASSERT_TRUE(find(SensorKind::gyroscope));
    make();
    EXPECT_FALSE(find(SensorKind::gyroscope)) << damage;
  };
  for (const char* const text : {"rubbish", "", "0.0", "nan", "1e400", "1,5"}) {
    expectNone(text, [&] { put(0, {{"in_anglvel_x_scale", text}}); });
  }
  const std::string folder = root_.at(device(0));
  expectNone("an axis", [&] { std::filesystem::remove(folder + "/in_anglvel_y_raw"); });
  expectNone("a folder", [&] { std::filesystem::create_directory(folder + "/scale"); });
  expectNone("a name", [&] { std::filesystem::rename(folder, folder + "x"); });
}

TEST_F(IioSensorFinderTest, AFileThatHoldsNoReadingMakesTheSampleNone) {
  const std::string name = device(0) + "/in_anglvel_y_raw";
  put(0, with(kRotation, {{"in_anglvel_scale", "1e300"}}));
  const auto sensor = find(SensorKind::gyroscope);
  ASSERT_TRUE(sensor);
  for (const char* text : {"", "\n", "rubbish", "1 2", "0x10", "nan", "inf", "-inf", "1e9", "1e400",
                           "9999999999999999999999999999999999999"}) {
    root_.put(name, text);
    EXPECT_FALSE(sensor->read()) << text;
  }
  const std::string path = root_.at(name);
  const std::function<void()> replacements[] = {
      [&] { std::filesystem::create_directory(path); },
      [&] { std::filesystem::create_symlink("/dev/zero", path); },
      [&] { ASSERT_EQ(mkfifo(path.c_str(), 0600), 0); },
      [&] { root_.put(name, std::string(100'000, '1')); }};
  for (const auto& replace : replacements) {
    std::filesystem::remove_all(path);
    replace();
    EXPECT_FALSE(sensor->read()) << "replacement " << &replace - replacements;
  }
  std::filesystem::remove_all(path);
  root_.put(name, "-4\n");
  expectSample(sensor->read(), 1e300, -4e300, 3e300, "mended");
}

// The kernel's device folders are links; whoever comes back may come back as something else.
TEST_F(IioSensorFinderTest, ADeviceThatComesBackIsReadAsItIsThen) {
  put(0, with(kRotation, {{"in_anglvel_scale", "2"}}));
  const auto sensor = find(SensorKind::gyroscope);
  remove(0);
  EXPECT_FALSE(sensor->read());
  EXPECT_FALSE(find(SensorKind::gyroscope));
  for (const auto& [name, text] : with(kRotation, {{"scale", "3"}})) {
    root_.put("sys/devices/i2c-1/iio:device0/" + name, text);
  }
  std::filesystem::create_directory_symlink("../../../devices/i2c-1/iio:device0",
                                            root_.at(device(0)));
  expectSample(read(SensorKind::gyroscope), 3, 6, 9, "through a link");
}

}  // namespace
}  // namespace quorvance
