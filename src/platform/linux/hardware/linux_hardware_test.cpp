#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/hardware/edid.h"
#include "platform/linux/hardware/linux_posture_facts.h"
#include "platform/linux/hardware/linux_power_source.h"
#include "platform/linux/hardware/linux_screen_facts.h"
#include "platform/linux/motion/iio_sensor_finder.h"
#include "platform/testing/temporary_folder_test_support.h"

namespace quorvance {
namespace {

std::string withChecksum(std::string block) {
  block.back() = '\0';
  const int sum = std::accumulate(block.begin(), block.end(), 0, [](int total, char byte) {
    return total + static_cast<unsigned char>(byte);
  });
  block.back() = static_cast<char>((256 - sum % 256) % 256);
  return block;
}

/// A base block with a timing of that size in millimetres, and a head of that size in centimetres.
std::string edidOf(int widthMillimetres, int heightMillimetres, int widthCentimetres = 0,
                   int heightCentimetres = 0) {
  std::string block(128, '\0');
  block.replace(0, 8, std::string("\0\xff\xff\xff\xff\xff\xff\0", 8));
  block[21] = static_cast<char>(widthCentimetres);
  block[22] = static_cast<char>(heightCentimetres);
  block[54] = 1;
  block[54 + 12] = static_cast<char>(widthMillimetres);
  block[54 + 13] = static_cast<char>(heightMillimetres);
  block[54 + 14] = static_cast<char>(widthMillimetres / 256 * 16 + heightMillimetres / 256);
  return withChecksum(block);
}

class LinuxHardwareTest : public testing::Test {
 protected:
  void connect(const std::string& connector, const std::string& modes, const std::string& edid,
               const std::string& enabled = "enabled") const {
    folder_.put("sys/class/drm/" + connector + "/status", "connected\n");
    folder_.put("sys/class/drm/" + connector + "/enabled", enabled + "\n");
    folder_.put("sys/class/drm/" + connector + "/modes", modes);
    folder_.put("sys/class/drm/" + connector + "/edid", edid);
  }
  void supply(const std::string& name,
              const std::vector<std::pair<std::string, std::string>>& files) const {
    const std::string folder = "sys/class/power_supply/" + name + "/";
    for (const auto& [file, text] : files) {
      folder_.put(folder + file, text + "\n");
    }
  }
  /// "logical width x height, native width x height", "-" where unknown.
  std::string screen() const {
    const ScreenFacts facts = LinuxScreenFacts(RootFiles(folder_.path())).read();
    std::string text;
    for (const auto& metric :
         {facts.logicalWidth, facts.logicalHeight, facts.nativeWidth, facts.nativeHeight}) {
      text += (metric ? std::to_string(static_cast<int>(*metric)) : "-") + " ";
    }
    return text;
  }
  BatteryReading battery() const { return LinuxPowerSource(RootFiles(folder_.path())).read(); }

  TemporaryFolder folder_;
};

TEST_F(LinuxHardwareTest, TheMainScreenIsTheLitOneAndABuiltInPanelBeforeOthers) {
  EXPECT_EQ(screen(), "- - - - ");
  folder_.put("sys/class/drm/version", "drm 1.1.0\n");
  folder_.put("sys/class/drm/card0-VGA-1/status", "disconnected\n");
  folder_.put("sys/class/drm/card0-VGA-1/modes", "640x480\n");
  EXPECT_EQ(screen(), "- - - - ");
  connect("card0-DP-2", "2560x1440i\n1920x1080\n", edidOf(597, 336));
  EXPECT_EQ(screen(), "2560 1440 2560 1440 ");
  connect("card0-HDMI-A-1", "", edidOf(597, 336));
  EXPECT_EQ(screen(), "2560 1440 2560 1440 ") << "a display without a mode shows nothing";
  connect("card1-eDP-1", "1920x1200\n", edidOf(301, 188));
  EXPECT_EQ(screen(), "1920 1200 1920 1200 ");
  connect("card1-eDP-1", "1920x1200\n", edidOf(301, 188), "disabled");
  EXPECT_EQ(screen(), "2560 1440 2560 1440 ") << "the lid is closed";
}

TEST_F(LinuxHardwareTest, LogicalUnitsNeedAPlausibleDensity) {
  struct Case {
    std::string modes;
    std::string edid;
    std::string expected;
  };
  // 25.4 mm are an inch: 254 mm for 400 pixels are 40 dpi.
  const Case cases[] = {
      {"3840x2400\n", edidOf(301, 188), "1920 1200 3840 2400 "},  // 324 dpi
      {"1920x1080\n", edidOf(254, 142), "960 540 1920 1080 "},    // 192 dpi
      {"1919x1080\n", edidOf(254, 143), "1919 1080 1919 1080 "},
      {"400x400\n", edidOf(254, 254), "400 400 400 400 "},
      {"399x400\n", edidOf(254, 254), "- - 399 400 "},
      {"1000x1000\n", edidOf(25, 25), "- - 1000 1000 "},  // 1016 dpi
      {"1920x1080\n", edidOf(0, 0), "- - 1920 1080 "},
      {"1920x1080\n", edidOf(0, 0, 60, 34), "1920 1080 1920 1080 "},
      {"1920x1080\n", "", "- - 1920 1080 "},
      {"65536x1080\n", edidOf(597, 336), "- - - - "},
      {"0x1080\n", edidOf(597, 336), "- - - - "},
      {"99999999999x1\n", edidOf(597, 336), "- - - - "},
      {"fullscreen\n", edidOf(597, 336), "- - - - "},
  };
  for (const Case& c : cases) {
    connect("card0-DP-1", c.modes, c.edid);
    EXPECT_EQ(screen(), c.expected) << c.modes;
  }
}

TEST(EdidTest, IsCheckedBeforeItIsBelieved) {
  const std::string good = edidOf(597, 336);
  ASSERT_TRUE(physicalSizeOf(good));
  EXPECT_EQ(physicalSizeOf(good)->widthMillimetres, 597);
  EXPECT_EQ(physicalSizeOf(good)->heightMillimetres, 336);
  EXPECT_TRUE(physicalSizeOf(good + std::string(128, 'x'))) << "extension blocks follow";
  std::string torn = good;
  torn[66] = 1;
  EXPECT_FALSE(physicalSizeOf(torn));
  EXPECT_FALSE(physicalSizeOf(good.substr(0, 127)));
  EXPECT_FALSE(physicalSizeOf(withChecksum(std::string(128, 'x'))));
  std::string noTiming = edidOf(597, 336, 60, 34);
  noTiming[54] = 0;
  noTiming = withChecksum(noTiming);
  ASSERT_TRUE(physicalSizeOf(noTiming));
  EXPECT_EQ(physicalSizeOf(noTiming)->widthMillimetres, 600);
}

TEST_F(LinuxHardwareTest, TheBatteryIsTheMachinesOwn) {
  EXPECT_FALSE(battery().level || battery().state);
  supply("AC", {{"type", "Mains"}, {"online", "1"}});
  supply("hid-mouse", {{"type", "Battery"}, {"scope", "Device"}, {"capacity", "7"}});
  supply("BAT0", {{"type", "Battery"}, {"present", "0"}, {"capacity", "0"}});
  EXPECT_FALSE(battery().level || battery().state);
  supply("BAT1", {{"type", "Battery"}, {"scope", "System"}, {"capacity", "42"}});
  EXPECT_EQ(battery().level, 0.42F);
  EXPECT_EQ(battery().state, 0);
}

TEST_F(LinuxHardwareTest, ABatteryWithoutAUsableWordOrNumberIsUnknown) {
  const std::pair<const char*, int> words[] = {{"Discharging", 1},  {"Charging", 2}, {"Full", 3},
                                               {"Not charging", 0}, {"Unknown", 0},  {"full", 0}};
  for (const auto& [word, state] : words) {
    supply("BAT0", {{"type", "Battery"}, {"status", word}});
    EXPECT_EQ(battery().state, state) << word;
  }
  const std::pair<const char*, std::optional<float>> levels[] = {
      {"0", 0.0F}, {"100", 1.0F}, {"101", {}}, {"-1", {}}, {"9x", {}}, {"99999999999", {}}};
  for (const auto& [text, level] : levels) {
    supply("BAT0", {{"capacity", text}});
    EXPECT_EQ(battery().level, level) << text;
  }
}

TEST(OrientationTest, IsTheEdgeOrTheFaceThatPointsDown) {
  struct Case {
    MotionSample sample;
    int orientation;
  };
  const Case cases[] = {
      {{0, -1, 0}, 1},       {{0, 1, 0}, 2},        {{-1, 0, 0}, 3},        {{1, 0, 0}, 4},
      {{0, 0, -1}, 5},       {{0, 0, 1}, 6},        {{0, -0.51, -0.86}, 1}, {{0, -0.49, -0.87}, 5},
      {{0.6, -0.7, 0.3}, 1}, {{0.7, -0.6, 0.3}, 4}, {{0, 0, 0}, 0},         {{0, -0.69, 0}, 0},
      {{0, -1.31, 0}, 0},    {{NAN, -1, 0}, 0},     {{0, -HUGE_VAL, 0}, 0},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(orientationOf(c.sample), c.orientation) << c.sample.x << " " << c.sample.y;
  }
}

TEST_F(LinuxHardwareTest, TheOrientationIsReadFromTheAccelerometer) {
  LinuxPostureFacts posture(std::make_shared<IioSensorFinder>(RootFiles(folder_.path())));
  EXPECT_EQ(posture.read().orientation, std::nullopt);
  const std::string device = "sys/bus/iio/devices/iio:device0/in_accel_";
  folder_.put(device + "scale", "0.01\n");
  const auto hold = [&](const char* x, const char* y, const char* z) {
    folder_.put(device + "x_raw", x);
    folder_.put(device + "y_raw", y);
    folder_.put(device + "z_raw", z);
    return posture.read().orientation;
  };
  // The kernel counts +1 g on the axis that points up.
  EXPECT_EQ(hold("0", "981", "0"), 1);
  EXPECT_EQ(hold("981", "0", "0"), 3);
  EXPECT_EQ(hold("0", "0", "981"), 5);
  EXPECT_EQ(hold("0", "0", "2981"), 0);
  EXPECT_EQ(hold("0", "0", "busy"), std::nullopt);
}

}  // namespace
}  // namespace quorvance
