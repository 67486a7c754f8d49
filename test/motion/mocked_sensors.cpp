// Run under umockdev-run with sensors.umockdev: a handheld as the kernel would show it, tilted
// about its x axis and turning. A second accelerometer sits in its base. The program puts itself in
// front of read(), so that a sensor's file may hang as a bus does that does not answer.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string_view>

#include "test/motion/sensor_rows_test_support.h"

// Read by the thread sanitizer: the library of the mocked devices opens and closes descriptors
// where it does not see that, and it takes two uses of one number for two of one file.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the name is the sanitizer's.
extern "C" const char* __tsan_default_options() { return "ignore_interceptors_accesses=1"; }

namespace quorvance {
namespace {

using testing::DoubleNear;
using testing::Pointwise;

constexpr double kTolerance = 1e-6;

std::atomic<bool> isGyroscopeHanging{false};
std::atomic<int> hungReaders{0};
std::mutex hangMutex;
std::condition_variable hangEnded;

bool isOfGyroscope(int file) {
  std::array<char, 256> path{};
  const std::string link = "/proc/self/fd/" + std::to_string(file);
  const ssize_t length = readlink(link.c_str(), path.data(), path.size());
  return length > 0 && std::string_view(path.data(), static_cast<std::size_t>(length))
                           .ends_with("/in_anglvel_x_raw");
}

void waitForTheEndOfTheHang() {
  ++hungReaders;
  std::unique_lock lock(hangMutex);
  hangEnded.wait(lock, [] { return !isGyroscopeHanging; });
}

void endTheHang() {
  const std::lock_guard lock(hangMutex);
  isGyroscopeHanging = false;
  hangEnded.notify_all();
}

// raw (-2058 + 10, 0, 4106 - 10) is (-0.5, 0, 1) g; a quarter turn of the chip makes it
// (0, 0.5, 1), and the seam counts the other way.
TEST(MockedSensorsTest, BecomeTheRowsOfTheBody) {
  const RealWorld world;
  EXPECT_THAT(lastRowAtServer(world, world.platform()),
              Pointwise(DoubleNear(kTolerance), {0.0, -0.5, -1.0, 1.065264, -0.532632, 0.0, 0.0,
                                                 -0.5, -1.0, 18.0, -6.0, 48.0}));
}

// Whatever ends while the reader is stuck has not waited for it: the screen, its upload, the
// manager and the platform.
TEST(MockedSensorsTest, ReadThatHangsCostsItsColumnsAndNobodyAnyTime) {
  const RealWorld world;
  isGyroscopeHanging = true;
  EXPECT_THAT(lastRowAtServer(world, world.platform(), {"chb_gra", "mag"}),
              Pointwise(DoubleNear(kTolerance),
                        {0.0, -0.5, -1.0, 0.0, 0.0, 0.0, 0.0, -0.5, -1.0, 18.0, -6.0, 48.0}));
  EXPECT_EQ(hungReaders, 1);
  endTheHang();
}

}  // namespace
}  // namespace quorvance

extern "C" ssize_t read(int file, void* bytes, size_t size) {
  using Read = ssize_t (*)(int, void*, size_t);
  static const auto next = reinterpret_cast<Read>(dlsym(RTLD_NEXT, "read"));
  if (quorvance::isGyroscopeHanging && quorvance::isOfGyroscope(file)) {
    quorvance::waitForTheEndOfTheHang();
  }
  return next(file, bytes, size);
}
