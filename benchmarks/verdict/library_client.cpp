#include "benchmarks/verdict/library_client.h"

#include <array>
#include <chrono>
#include <condition_variable>
#include <fstream>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

#include "benchmarks/full_transaction.h"
#include "quorvance/platform/linux_platform.h"

namespace quorvance {
namespace {

constexpr int kWarmUpVerdicts = 300;
constexpr int kReportsOfCategory = 50;

/// Places for verdicts in flight. The waiting thread sleeps, as a host's does: std::semaphore
/// spins.
class Places {
 public:
  explicit Places(int count) : free_(count) {}

  void take() {
    std::unique_lock lock(mutex_);
    isFree_.wait(lock, [&] { return free_ > 0; });
    --free_;
  }
  void giveBack() {
    {
      const std::lock_guard lock(mutex_);
      ++free_;
    }
    isFree_.notify_one();
  }

 private:
  std::mutex mutex_;
  std::condition_variable isFree_;
  int free_;
};

// After a change the folder is listed anew for two seconds.
constexpr std::chrono::milliseconds kSettlingTime{2100};

}  // namespace

LibraryClient::LibraryClient(const LoopbackServer& server, const std::string& folder) {
  const double beginning = nowMicroseconds();
  LinuxPlatformOptions options;
  options.dataFolder = folder;
  manager_ = std::make_unique<QuorvanceManager>(makeLinuxPlatform(std::move(options)));
  const double made = nowMicroseconds();
  manager_->setupWithServerUrl(server.url(), "user-1");
  start_ = {made - beginning, nowMicroseconds() - made};
  manager_->initializeDeviceId();
  server.awaitStart();
  inTurn(kWarmUpVerdicts);
}

void LibraryClient::settle() { std::this_thread::sleep_for(kSettlingTime); }

Figures LibraryClient::inTurn(int count) {
  const auto transaction = fullTransaction();
  const auto answered = std::make_shared<Places>(0);
  Figures calls;
  Figures verdicts;
  for (int i = 0; i < count; ++i) {
    const double before = nowMicroseconds();
    manager_->getRiskForCheckPoint(
        *transaction,
        [answered](const Risk&, const std::string&, const std::string&) { answered->giveBack(); });
    calls.push_back(nowMicroseconds() - before);
    answered->take();
    verdicts.push_back(nowMicroseconds() - before);
  }
  calls.insert(calls.end(), verdicts.begin(), verdicts.end());
  return calls;
}

double LibraryClient::perSecond(int count, int inFlight) {
  const auto transaction = fullTransaction();
  const auto places = std::make_shared<Places>(inFlight);
  const double before = nowMicroseconds();
  for (int i = 0; i < count; ++i) {
    places->take();
    manager_->getRiskForCheckPoint(
        *transaction,
        [places](const Risk&, const std::string&, const std::string&) { places->giveBack(); });
  }
  for (int i = 0; i < inFlight; ++i) places->take();
  return count / ((nowMicroseconds() - before) / 1e6);
}

void storeReports(const std::string& folder) {
  constexpr std::array kCategories = {"bio", "crash", "communicationError"};
  for (const std::string category : kCategories) {
    for (int i = 0; i < kReportsOfCategory; ++i) {
      std::ofstream(folder + "/" + category + "00000000-0000-4000-8000-0000000000" +
                    std::to_string(10 + i) + ".json")
          << "{}";
    }
  }
}

}  // namespace quorvance
