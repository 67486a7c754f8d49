#include "benchmarks/verdict/library_client.h"

#include <array>
#include <fstream>
#include <utility>

#include "benchmarks/full_transaction.h"
#include "quorvance/platform/linux_platform.h"

namespace quorvance {
namespace {

constexpr int kWarmUpVerdicts = 300;
constexpr int kReportsOfCategory = 50;

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

Figures LibraryClient::inTurn(int count) {
  const auto transaction = fullTransaction();
  std::binary_semaphore isAnswered{0};
  Figures calls;
  Figures verdicts;
  for (int i = 0; i < count; ++i) {
    const double before = nowMicroseconds();
    manager_->getRiskForCheckPoint(*transaction, [&](const Risk&, const std::string&,
                                                     const std::string&) { isAnswered.release(); });
    calls.push_back(nowMicroseconds() - before);
    isAnswered.acquire();
    verdicts.push_back(nowMicroseconds() - before);
  }
  calls.insert(calls.end(), verdicts.begin(), verdicts.end());
  return calls;
}

double LibraryClient::perSecond(int count, int inFlight) {
  const auto transaction = fullTransaction();
  std::counting_semaphore<> places{inFlight};
  const double before = nowMicroseconds();
  for (int i = 0; i < count; ++i) {
    places.acquire();
    manager_->getRiskForCheckPoint(*transaction, [&](const Risk&, const std::string&,
                                                     const std::string&) { places.release(); });
  }
  for (int i = 0; i < inFlight; ++i) places.acquire();
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
