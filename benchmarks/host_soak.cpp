// What a host does all day, as fast as it goes: nothing may grow and no verdict may be missing. The
// library as it is installed, against a server of its own on the loopback.
//
// host_soak [SECONDS]    60, unless it is told; status 1 for what grew or is missing

#include <stdlib.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "benchmarks/full_transaction.h"
#include "benchmarks/verdict/loopback_server.h"
#include "benchmarks/verdict/measure.h"
#include "quorvance/platform/linux_platform.h"
#include "quorvance/quorvance.h"

namespace quorvance {
namespace {

constexpr int kDefaultSeconds = 60;
constexpr int kMaxSeconds = 86'400;
constexpr std::size_t kInFlight = 16;
constexpr int kProcessors = 2;
constexpr std::chrono::seconds kFlushTime{10};
/// Calls of one manager; then the host makes another one.
constexpr long kCallsOfManager = 20'000;
/// Lines of the table.
constexpr int kSamples = 20;
/// Those in which connections, buffers and arenas reach their size.
constexpr int kWarmUpSamples = 8;
constexpr double kMaxGrownMegabytes = 8;
// Connections and threads that idle come and go.
constexpr double kMaxGrownDescriptors = 8;
constexpr double kMaxGrownThreads = 4;

double entriesOf(const char* folder) {
  return static_cast<double>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

struct Sample {
  double megabytes = privateMegabytes();
  double descriptors = entriesOf("/proc/self/fd");
  double threads = entriesOf("/proc/self/task");
};

/// Verdicts that were asked for and that came.
class Verdicts {
 public:
  /// Waits until there is room in flight.
  void ask() {
    std::unique_lock lock(mutex_);
    came_.wait(lock, [&] { return asked_ - answered_ < kInFlight; });
    ++asked_;
  }
  void answer() {
    {
      const std::lock_guard lock(mutex_);
      ++answered_;
    }
    came_.notify_one();
  }
  std::size_t answered() const {
    const std::lock_guard lock(mutex_);
    return answered_;
  }
  bool areAllAnswered() const {
    const std::lock_guard lock(mutex_);
    return asked_ == answered_;
  }

 private:
  mutable std::mutex mutex_;
  std::condition_variable came_;
  std::size_t asked_ = 0;
  std::size_t answered_ = 0;
};

/// A folder of this run, removed at the end.
class Folder {
 public:
  Folder() {
    std::string name = std::filesystem::temp_directory_path() / "host_soak.XXXXXX";
    path_ = mkdtemp(name.data());
  }
  ~Folder() { std::filesystem::remove_all(path_); }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

class Host {
 public:
  Host(const LoopbackServer& server, const std::string& folder) : url_(server.url()) {
    options_.dataFolder = folder;
    renew();
  }

  void call(long number) {
    if (number % kCallsOfManager == kCallsOfManager - 1) renew();
    if (number % 500 == 0) logout();
    if (number % 50 == 0) showScreen(number);
    if (number % 10 == 0) manager_->arriveToCheckPoint(General());
    if (number % 20 == 0) {
      manager_->updateCheckPointStatus(CheckPointType::TRANSACTION, "r", CheckPointStatus::APPROVED,
                                       "t");
    }
    verdicts_->ask();
    manager_->getRiskForCheckPoint(
        *transaction_, [verdicts = verdicts_](const Risk&, const std::string&, const std::string&) {
          verdicts->answer();
        });
  }
  bool finish() { return manager_->flush(kFlushTime) && verdicts_->areAllAnswered(); }
  std::size_t answered() const { return verdicts_->answered(); }

 private:
  void renew() {
    if (manager_) manager_->shutdown(kFlushTime);
    manager_ = std::make_unique<QuorvanceManager>(makeLinuxPlatform(options_));
    manager_->setupWithServerUrl(url_, "user-1");
    manager_->initializeDeviceId();
  }
  void logout() {
    manager_->setPendingUserData(Json{{"contacts", 1}});
    manager_->logout();
    manager_->arriveToCheckPoint(Login(User{.userId = "user-2"}));
  }
  void showScreen(long number) {
    const auto screen =
        manager_->startNewScreenListener(ScreenListenerType::LOGIN_FORM, number, nullptr);
    screen->resumeListen();
    screen->finishScreenListener();
  }

  const std::string url_;
  LinuxPlatformOptions options_;
  const std::unique_ptr<Transaction> transaction_ = fullTransaction();
  const std::shared_ptr<Verdicts> verdicts_ = std::make_shared<Verdicts>();
  std::unique_ptr<QuorvanceManager> manager_;
};

/// Says so, where it is not within the bound.
bool staysWithin(const char* what, double before, double after, double bound) {
  if (after - before <= bound) return true;
  std::printf("%s grew from %.1f to %.1f, more than %.1f\n", what, before, after, bound);
  return false;
}

/// Compares the last sample with the largest of the warm-up.
bool isSteady(const std::vector<Sample>& samples) {
  Sample before = samples.front();
  for (const Sample& sample : std::span(samples).first(kWarmUpSamples)) {
    before.megabytes = std::max(before.megabytes, sample.megabytes);
    before.descriptors = std::max(before.descriptors, sample.descriptors);
    before.threads = std::max(before.threads, sample.threads);
  }
  const Sample& after = samples.back();
  const bool hasMemory =
      staysWithin("private memory", before.megabytes, after.megabytes, kMaxGrownMegabytes);
  const bool hasDescriptors =
      staysWithin("descriptors", before.descriptors, after.descriptors, kMaxGrownDescriptors);
  const bool hasThreads = staysWithin("threads", before.threads, after.threads, kMaxGrownThreads);
  return hasMemory && hasDescriptors && hasThreads;
}

bool soak(int seconds) {
  runOn(kProcessors);
  const LoopbackServer server(kProcessors);
  const Folder folder;
  Host host(server, folder.path());
  std::vector<Sample> samples;
  std::printf("%10s %10s %8s %12s %8s\n", "seconds", "verdicts", "MB", "descriptors", "threads");
  const double begin = nowMicroseconds();
  long calls = 0;
  for (int i = 1; i <= kSamples; ++i) {
    const double end = begin + 1e6 * seconds * i / kSamples;
    while (nowMicroseconds() < end) host.call(calls++);
    const Sample& sample = samples.emplace_back();
    std::printf("%10.1f %10zu %8.1f %12.0f %8.0f\n", (end - begin) / 1e6, host.answered(),
                sample.megabytes, sample.descriptors, sample.threads);
    std::fflush(stdout);
  }
  const bool isSteadyNow = isSteady(samples);
  const bool isWhole = host.finish();
  if (!isWhole) std::puts("not everything that was accepted was answered");
  return isSteadyNow && isWhole;
}

int secondsOf(std::string_view argument) {
  int seconds = 0;
  const auto [end, fault] =
      std::from_chars(argument.data(), argument.data() + argument.size(), seconds);
  const bool isWhole = fault == std::errc() && end == argument.data() + argument.size();
  return isWhole && seconds >= 1 && seconds <= kMaxSeconds ? seconds : 0;
}

}  // namespace
}  // namespace quorvance

int main(int argc, char** argv) {
  const int seconds = argc == 1   ? quorvance::kDefaultSeconds
                      : argc == 2 ? quorvance::secondsOf(argv[1])
                                  : 0;
  if (seconds == 0) {
    std::fprintf(stderr, "usage: host_soak [SECONDS, 1 to %d]\n", quorvance::kMaxSeconds);
    return 2;
  }
  return quorvance::soak(seconds) ? 0 : 1;
}
