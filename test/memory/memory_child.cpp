// A host whose memory runs out: memory_child URL FOLDER random SEED ONE_IN, or ... limit MEGABYTES.
// Ends with 0 when nothing was thrown at it and each verdict came exactly once.

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <mutex>
#include <new>
#include <string>
#include <vector>

#include "quorvance/quorvance.h"
#include "test/memory/failing_allocator.h"

namespace quorvance {
namespace {

constexpr int kSomethingThrown = 3;
constexpr int kVerdictMissing = 4;
constexpr int kVerdictTwice = 5;
constexpr int kNothingFailed = 6;
// Only a verdict that never comes is waited for so long.
constexpr std::chrono::seconds kTimeout{15};

/// Counts verdicts, each of which must come once.
class Verdicts {
 public:
  RiskCompletion next() {
    const RunningCode host(RunningCode::Owner::host);
    return
        [this, number = asked_++](Risk, const std::string&, const std::string&) { count(number); };
  }
  /// What an inspection tells counts as one.
  InspectionCompletion nextInspection() {
    const RunningCode host(RunningCode::Owner::host);
    return [this, number = asked_++](const std::vector<InspectedField>&) { count(number); };
  }

  int check() {
    std::unique_lock lock(mutex_);
    const auto asked = counts_.begin() + static_cast<std::ptrdiff_t>(asked_);
    const auto haveAllCome = [&] { return std::count(counts_.begin(), asked, 0) == 0; };
    if (!arrived_.wait_for(lock, kTimeout, haveAllCome)) return kVerdictMissing;
    std::puts("all have come");
    std::fflush(stdout);
    return std::count(counts_.begin(), asked, 1) == asked - counts_.begin() ? EXIT_SUCCESS
                                                                            : kVerdictTwice;
  }

 private:
  void count(std::size_t number) {
    const RunningCode inside(RunningCode::Owner::host);
    const std::lock_guard lock(mutex_);
    ++counts_.at(number);
    arrived_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable arrived_;
  std::size_t asked_ = 0;
  std::array<int, 256> counts_{};
};

/// A call into the library, out of which nothing may come.
void call(const std::function<void()>& operation) {
  try {
    const RunningCode library(RunningCode::Owner::library);
    operation();
  } catch (...) {
    std::_Exit(kSomethingThrown);
  }
}

/// Has nothing in it, and keeps what wants to know of its touches.
class PlainView : public View {
 public:
  std::shared_ptr<QuorvanceGestureRecognizer> recognizer;

  ViewFrame frame() override { return {0, 0, 100, 100}; }
  std::int64_t tag() override { return tag_; }
  void setTag(std::int64_t tag) override { tag_ = tag; }
  std::vector<std::shared_ptr<View>> subviews() override { return {}; }
  std::string description() override { return {}; }
  void addGestureRecognizer(std::shared_ptr<QuorvanceGestureRecognizer> added) override {
    recognizer = std::move(added);
  }

 private:
  std::int64_t tag_ = 0;
};

void playScreen(QuorvanceManager& manager) {
  const auto view = std::make_shared<PlainView>();
  std::shared_ptr<QuorvanceScreenListener> listener;
  call([&] { listener = manager.startNewScreenListener(ScreenListenerType::GENERAL, 1, view); });
  for (const auto state : {GestureState::began, GestureState::changed, GestureState::ended}) {
    if (view->recognizer) call([&] { view->recognizer->setState(state, {5, 5}); });
  }
  call([&] { listener->resumeListen(); });
  call([&] { listener->finishScreenListener(); });
}

void playRound(QuorvanceManager& manager, const std::string& url, Verdicts& verdicts) {
  const Login login(std::make_shared<User>(User{.userId = "anna"}));
  const Transaction transfer({.amount = 12.5});
  call([&] { manager.setupWithServerUrl(url, "anna"); });
  call([&] { manager.initializeDeviceId(); });
  call([&] { manager.getRiskForCheckPoint(login, verdicts.next()); });
  call([&] { manager.arriveToCheckPoint(General()); });
  call([&] { manager.getRiskForCheckPoint(transfer, verdicts.next()); });
  call([&] {
    manager.updateCheckPointStatus(CheckPointType::LOGIN, "r", CheckPointStatus::APPROVED, {});
  });
  playScreen(manager);
  call([&] { manager.crashEyeDidCatchCrash(CrashModel{}); });
  call([&] { manager.onRequestAccessWithTypeMobilePermission(MobilePermission::CAMERA); });
  call([&] { manager.sendingTracingData(); });
  call([&] { manager.getSessionId(); });
  call([&] { manager.logout(); });
}

/// What lacks memory for a platform tells so, and by nothing else.
void tryToMakeAPlatform() {
  try {
    makeLinuxPlatform();
  } catch (const std::bad_alloc&) {
  }
}

int failAtRandom(Platform platform, const std::string& url, std::uint64_t seed,
                 std::uint64_t oneIn) {
  constexpr int kRounds = 10;
  Verdicts verdicts;
  QuorvanceManager manager(platform);
  startFailing(seed, oneIn);
  for (int i = 0; i < kRounds; ++i) {
    playRound(manager, url, verdicts);
    call([&] {
      QuorvanceManager another(platform);
      another.getRiskForCheckPoint(Launch(), verdicts.next());
    });
    call([&] { inspectDevice(platform, verdicts.nextInspection()); });
    call([] { tryToMakeAPlatform(); });
  }
  const int result = verdicts.check();
  return stopFailing() == 0 ? kNothingFailed : result;
}

/// Leaves so much address space beyond what the process has.
void limitMemory(std::uint64_t megabytes) {
  std::uint64_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  const auto pageBytes = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
  rlimit limit = {};
  getrlimit(RLIMIT_AS, &limit);
  limit.rlim_cur = pages * pageBytes + megabytes * 1024 * 1024;
  setrlimit(RLIMIT_AS, &limit);
}

int runOutOf(std::uint64_t megabytes, const Platform& platform, const std::string& url) {
  constexpr int kVerdicts = 2;
  Verdicts verdicts;
  QuorvanceManager manager(platform);
  manager.setServerUrl(url);
  // Afterwards the threads are there.
  manager.getRiskForCheckPoint(Launch(), verdicts.next());
  if (const int result = verdicts.check(); result != EXIT_SUCCESS) return result;
  limitMemory(megabytes);
  for (int i = 0; i < kVerdicts; ++i) {
    call([&] { manager.getRiskForCheckPoint(Launch(), verdicts.next()); });
  }
  return verdicts.check();
}

int run(const std::vector<std::string>& arguments) {
  const RunningCode host(RunningCode::Owner::host);
  LinuxPlatformOptions options;
  options.dataFolder = arguments.at(1);
  Platform platform = makeLinuxPlatform(std::move(options));
  // They are read by a library that does not survive it.
  platform.facts.fonts = nullptr;
  const std::uint64_t number = std::stoull(arguments.at(3));
  if (arguments.at(2) == "limit") return runOutOf(number, platform, arguments.at(0));
  return failAtRandom(platform, arguments.at(0), number, std::stoull(arguments.at(4)));
}

}  // namespace
}  // namespace quorvance

int main(int count, char** arguments) { return quorvance::run({arguments + 1, arguments + count}); }
