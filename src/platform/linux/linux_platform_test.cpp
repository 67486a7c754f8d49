#include "quorvance/platform/linux_platform.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

#include "platform/linux/facts/linux_environment.h"
#include "platform/linux/storage/data_folder.h"
#include "platform/testing/temporary_folder_test_support.h"
#include "quorvance/platform/host_loop_queue.h"

namespace quorvance {
namespace {

std::size_t filesOf(const std::string& path) {
  const auto files = std::filesystem::recursive_directory_iterator(path);
  return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

std::size_t threadsOfProcess() {
  const auto tasks = std::filesystem::directory_iterator("/proc/self/task");
  return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

void waitForFileLane(const Platform& platform) {
  std::promise<void> done;
  platform.backgroundQueue->post(WorkLane::files, [&] { done.set_value(); });
  done.get_future().wait();
}

TEST(LinuxPlatformTest, HasAllThatIsRequiredAndStartsNothing) {
  TemporaryFolder home;
  LinuxPlatformOptions options;
  options.environment = {{"HOME", home.path()}};
  const std::size_t threads = threadsOfProcess();
  const Platform platform = makeLinuxPlatform(options);
  EXPECT_TRUE(platform.clock && platform.mainQueue && platform.backgroundQueue && platform.http &&
              platform.defaults);
  EXPECT_TRUE(platform.identity && platform.environment && platform.facts.system);
  EXPECT_TRUE(platform.motion && platform.motion->makeManager());
  EXPECT_EQ(threadsOfProcess(), threads);
  EXPECT_EQ(filesOf(home.path()), 0U);
}

TEST(LinuxPlatformTest, CrashCaptureCanBeRefused) {
  LinuxPlatformOptions options;
  EXPECT_TRUE(makeLinuxPlatform(options).crashTrap);
  options.mayCatchCrashes = false;
  EXPECT_FALSE(makeLinuxPlatform(options).crashTrap);  // nobody else can install anything
}

TEST(LinuxPlatformTest, TakesItsNameFromTheExecutableWithoutAHostIdentifier) {
  const Platform platform = makeLinuxPlatform();
  const auto executable = std::filesystem::read_symlink("/proc/self/exe").filename().string();
  EXPECT_EQ(platform.hostApplication.identifier, executable);
  EXPECT_EQ(platform.hostApplication.shortVersion, std::nullopt);
}

TEST(LinuxPlatformTest, KeepsItsStateUnderTheHostIdentifier) {
  TemporaryFolder home;
  LinuxPlatformOptions options;
  options.hostApplication = {"com.bank.app", "2.1"};
  options.environment = {{"HOME", home.path()}};
  {
    const Platform platform = makeLinuxPlatform(options);
    platform.defaults->write("deviceId", "d1");
    waitForFileLane(platform);
  }
  EXPECT_EQ(home.get(".local/share/com.bank.app/quorvance/state.json"), R"({"deviceId":"d1"})");
  EXPECT_EQ(makeLinuxPlatform(options).defaults->read("deviceId").text, "d1");
}

TEST(LinuxPlatformTest, UsesWhatTheHostGives) {
  TemporaryFolder root;
  root.put("etc/os-release", "NAME=Fake\n");
  LinuxPlatformOptions options;
  options.root = root.path();
  options.dataFolder = root.at("data");
  options.mainQueue = std::make_shared<HostLoopQueue>();
  const Platform platform = makeLinuxPlatform(options);
  EXPECT_EQ(platform.mainQueue, options.mainQueue);
  EXPECT_EQ(platform.facts.system->read().systemName, "Fake");
  platform.defaults->write("a", "1");
  waitForFileLane(platform);
  EXPECT_EQ(root.get("data/state.json"), R"({"a":"1"})");
}

TEST(LinuxPlatformTest, TheDataFolderFollowsTheUsersDirectories) {
  using Variables = LinuxEnvironment::Variables;
  struct Case {
    Variables variables;
    std::string_view host;
    std::optional<std::string> folder;
  };
  const Case cases[] = {
      {{{"XDG_DATA_HOME", "/d/"}, {"HOME", "/h"}}, "com.bank.app", "/d/com.bank.app/quorvance"},
      {{{"XDG_DATA_HOME", "relative"}, {"HOME", "/h"}}, "a", "/h/.local/share/a/quorvance"},
      {{{"XDG_DATA_HOME", ""}, {"HOME", "/h/"}}, "a", "/h/.local/share/a/quorvance"},
      {{{"HOME", "/h"}}, "../../etc", "/h/.local/share/.._.._etc/quorvance"},
      {{{"HOME", "/h"}}, "..", "/h/.local/share/__/quorvance"},
      {{{"HOME", "/h"}}, ".", "/h/.local/share/_/quorvance"},
      {{{"HOME", "/h"}}, "", "/h/.local/share/_/quorvance"},
      {{{"HOME", "/"}}, "a", "/.local/share/a/quorvance"},
      {{{"HOME", "h"}}, "a", {}},
      {{}, "a", {}},
  };
  for (const Case& c : cases) {
    LinuxEnvironment environment(c.variables);
    EXPECT_EQ(dataFolderFor(environment, c.host), c.folder);
  }
  EXPECT_EQ(asPathComponent(std::string(1000, 'x')).size(), 200U);
  EXPECT_EQ(asPathComponent(std::string_view("a\0b", 3)), "a_b");
}

/// Does something odd to the path, whose folder is there.
using Oddity = void (*)(const std::string& path);

void putRubbish(const std::string& path) {
  std::string bytes;
  for (int i = 0; i < 40'000; ++i) bytes += static_cast<char>(i * 37 % 256);
  std::ofstream(path, std::ios::binary) << bytes;
}
void putHundredMegabytes(const std::string& path) {
  std::ofstream(path).flush();
  std::filesystem::resize_file(path, 100 << 20);
}
void putLoop(const std::string& path) { std::filesystem::create_symlink(path, path); }
void putFolder(const std::string& path) { std::filesystem::create_directories(path + "/" + "x"); }
void putPipe(const std::string& path) { EXPECT_EQ(mkfifo(path.c_str(), 0666), 0); }
void putForbidden(const std::string& path) {
  std::ofstream(path) << "Book 14\n";
  std::filesystem::permissions(path, std::filesystem::perms::none);
}
void putHugeNumbers(const std::string& path) {
  std::ofstream(path) << "99999999999999999999999x99999999999999999999\n";
}

/// What leads to other files where it is as it should be, in the order in which it is looked at.
constexpr std::pair<const char*, const char*> kSoundFiles[] = {
    {"proc/net/route", "wlan0\t00000000\t0102000A\t0003\t0\t0\t0\t00000000\n"},
    {"sys/class/net/wlan0/carrier", "1\n"},
    {"sys/class/power_supply/BAT0/type", "Battery\n"},
    {"sys/bus/iio/devices/iio:device0/in_accel_scale", "0.01\n"}};

// None of it is told, none of it hangs, however far it is read.
class HostileRootTest : public testing::TestWithParam<std::size_t> {};

TEST_P(HostileRootTest, TellsNothingOdd) {
  const char* const paths[] = {"etc/os-release",
                               "usr/lib/os-release",
                               "etc/machine-info",
                               "etc/machine-id",
                               "etc/locale.conf",
                               "etc/default/locale",
                               "etc/timezone",
                               "etc/localtime",
                               "etc/default/keyboard",
                               ".flatpak-info",
                               "proc/device-tree/model",
                               "proc/device-tree/chassis-type",
                               "sys/class/dmi/id/product_name",
                               "sys/class/dmi/id/chassis_type",
                               "proc/net/route",
                               "proc/net/ipv6_route",
                               "sys/class/drm/card0-DP-1/status",
                               "sys/class/drm/card0-DP-1/modes",
                               "sys/class/drm/card0-DP-1/edid",
                               "sys/class/power_supply/BAT0/type",
                               "sys/class/power_supply/BAT0/capacity",
                               "sys/class/power_supply/BAT0/status",
                               "sys/class/power_supply/BAT0/scope",
                               "sys/class/power_supply/BAT0/present",
                               "sys/class/net/wlan0/carrier",
                               "sys/class/net/wlan0/uevent",
                               "sys/class/net/wlan0/wireless",
                               "sys/bus/iio/devices/iio:device0/name",
                               "sys/bus/iio/devices/iio:device0/label",
                               "sys/bus/iio/devices/iio:device0/location",
                               "sys/bus/iio/devices/iio:device0/in_accel_scale",
                               "sys/bus/iio/devices/iio:device0/in_accel_mount_matrix",
                               "sys/bus/iio/devices/iio:device0/sampling_frequency",
                               "sys/bus/iio/devices/iio:device0/in_accel_x_raw",
                               "sys/bus/iio/devices/iio:device0/in_accel_y_raw",
                               "sys/bus/iio/devices/iio:device0/in_accel_z_raw"};
  for (const Oddity oddity : {&putRubbish, &putHundredMegabytes, &putLoop, &putFolder, &putPipe,
                              &putForbidden, &putHugeNumbers}) {
    const TemporaryFolder root;
    for (const char* const path : paths) {
      std::filesystem::create_directories(std::filesystem::path(root.at(path)).parent_path());
      oddity(root.at(path));
    }
    for (std::size_t i = 0; i < GetParam(); ++i) {
      const auto& [path, content] = kSoundFiles[i];
      std::filesystem::remove_all(root.at(path));
      root.put(path, content);
    }
    LinuxPlatformOptions options;
    options.root = root.path();
    options.environment = {{"HOME", root.path()}};
    const Platform platform = makeLinuxPlatform(options);
    const SystemFacts system = platform.facts.system->read();
    EXPECT_FALSE(system.systemName || system.systemVersion || system.locale || system.timeZone);
    const bool mayRead = oddity == &putForbidden && geteuid() == 0;
    const bool isText = mayRead || oddity == &putHugeNumbers;
    EXPECT_EQ(system.model == platform.environment->machine(), !isText) << *system.model;
    EXPECT_FALSE(platform.facts.screen->read().nativeWidth);
    const BatteryReading battery = platform.facts.power->read();
    EXPECT_FALSE(battery.level);
    EXPECT_EQ(battery.state.value_or(0), 0) << "unknown";
    // A folder "wireless" with something in it is as the kernel has it.
    const bool isWireless = oddity == &putFolder && GetParam() > 1;
    EXPECT_EQ(platform.facts.network->read().isDefaultRouteWireless.value_or(false), isWireless);
    EXPECT_FALSE(platform.facts.posture->read().orientation);
    EXPECT_EQ(platform.identity->vendorIdentifier().value_or("").size(), 36U);
    EXPECT_TRUE(platform.facts.accessibility->read().installedKeyboards.empty());
  }
}

INSTANTIATE_TEST_SUITE_P(UntilEachSoundFile, HostileRootTest,
                         testing::Range(std::size_t{0}, std::size(kSoundFiles) + 1));

TEST(LinuxPlatformTest, TheEnvironmentIsACopy) {
  setenv("QUORVANCE_TEST_VARIABLE", "a=b", 1);
  const Platform platform = makeLinuxPlatform();
  unsetenv("QUORVANCE_TEST_VARIABLE");
  EXPECT_EQ(platform.environment->variable("QUORVANCE_TEST_VARIABLE"), "a=b");
  EXPECT_EQ(platform.environment->variable("QUORVANCE_TEST_OTHER"), std::nullopt);
  EXPECT_FALSE(platform.environment->machine().empty());
}

}  // namespace
}  // namespace quorvance
