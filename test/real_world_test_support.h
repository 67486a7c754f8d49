#pragma once

// The real library over real HTTP against a risk server in this process.

#include <condition_variable>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "apps/risk_server/risk_server.h"
#include "platform/testing/temporary_folder_test_support.h"
#include "quorvance/quorvance.h"

namespace quorvance {

/// Longer than anything that a test waits for; only a failing test waits so long.
inline constexpr std::chrono::seconds kTestPatience{30};

/// A verdict as a host receives it.
struct ReceivedVerdict {
  RiskLevel level = RiskLevel::undefined;
  std::string signedRisk;
  std::string requestId;
};

/// Collects verdicts from the library's threads.
class VerdictInbox {
 public:
  RiskCompletion completion() {
    return [this](Risk risk, std::string signedRisk, std::string requestId) {
      const std::lock_guard lock(mutex_);
      verdicts_.push_back({risk.riskLevel, std::move(signedRisk), std::move(requestId)});
      arrived_.notify_all();
    };
  }

  /// As many as have come when the count is reached or the timeout comes.
  std::vector<ReceivedVerdict> wait(std::size_t count) {
    std::unique_lock lock(mutex_);
    arrived_.wait_for(lock, kTestPatience, [&] { return verdicts_.size() >= count; });
    return verdicts_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::vector<ReceivedVerdict> verdicts_;
};

/// A server, and the platform of a host that has just been installed.
struct RealWorld {
  // Neither trace loops nor crash handlers, unless a test wants them: a loop holds its manager for
  // ever, as its contract says.
  RealWorld() {
    server.setConfiguration(nlohmann::ordered_json::parse(R"({"timeout_connection": 10})"));
    server.start();
  }

  Platform platform(std::shared_ptr<MainQueue> mainQueue = nullptr) const {
    LinuxPlatformOptions options;
    options.hostApplication = {"com.bank.app", "4.2"};
    options.dataFolder = folder.at("data");
    options.mainQueue = std::move(mainQueue);
    return makeLinuxPlatform(std::move(options));
  }

  /// The same, with other documents.
  Platform platformWith(std::shared_ptr<DocumentsFolder> documents) const {
    Platform changed = platform();
    changed.documents = std::move(documents);
    return changed;
  }

  /// Whether calls of the path, without its leading slash, came that often.
  bool sees(const std::string& path, std::uint64_t count = 1) const {
    return server.waitForCalls("/" + path, count, kTestPatience);
  }

  TemporaryFolder folder;
  risk_server::RiskServer server;
};

}  // namespace quorvance
