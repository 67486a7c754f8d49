#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/manager_core.h"
#include "platform/testing/fake_crash_trap.h"
#include "platform/testing/test_world.h"

namespace quorvance {

/// The keys of an object, in order.
inline std::vector<std::string> keysOf(const Json& object) {
  std::vector<std::string> keys;
  for (const auto& item : object.items()) keys.push_back(item.key());
  return keys;
}

/// Every reading is a millisecond later than the one before.
class TickingClock : public WallClock {
 public:
  double secondsSince1970() override { return static_cast<double>(++milliseconds_) / 1000.0; }

 private:
  std::int64_t milliseconds_ = 1'700'000'000'000;
};

/// A manager over doubles. Its reports are really stored and sent, in memory.
struct ManagerWorld : TestWorld {
  std::shared_ptr<FakeCrashTrap> trap = std::make_shared<FakeCrashTrap>();
  std::function<void(Platform&)> changePlatform;
  std::shared_ptr<Context> context;
  std::shared_ptr<ManagerCore> manager;

  /// `change` replaces members of the platform.
  explicit ManagerWorld(std::function<void(Platform&)> change = nullptr)
      : changePlatform(std::move(change)) {
    restart();
  }

  /// A new process over the same store.
  void restart() {
    Platform seam = platform();
    seam.crashTrap = trap;
    if (changePlatform) changePlatform(seam);
    context = std::make_shared<Context>(std::move(seam));
    manager = ManagerCore::make(context);
  }

  bool setup(const std::optional<std::string>& user = "u1") {
    return manager->setup(kServer, user, nullptr);
  }

  /// Answers with this configuration and lets the manager take it.
  void configure(const std::string& configuration) {
    http->answer(kConfigurationPath, okReply(configuration));
    setup();
    time->run();
  }

  /// Puts stored reports there.
  void put(std::initializer_list<const char*> names, const std::string& bytes = R"({"kept":1})") {
    for (const char* name : names) documents->files[name] = bytes;
  }

  /// The users under whom requests went to the path, in order.
  std::vector<std::string> usersSentTo(std::string_view path) const {
    std::vector<std::string> users;
    for (const SentRequest& sent : http->sentTo(path)) {
      users.push_back(*findText(sent.body["keys"], "user_id"));
    }
    return users;
  }

  /// "method status" of every trace entry of the manager, in order.
  std::vector<std::string> traces() const {
    std::vector<std::string> lines;
    for (const Json& entry : context->tracing->entries()) {
      const std::string* method = findText(entry, "methodName");
      const std::string* status = findText(entry, "statusLoggingType");
      if (method != nullptr && status != nullptr) lines.push_back(*method + " " + *status);
    }
    return lines;
  }

  static constexpr const char* kServer = "http://risk.test/";
  static constexpr const char* kConfigurationPath = "qrsk-med/3.0/getSdkConfiguration/";
  static constexpr const char* kDevicePath = "qrsk-med/3.0//GetDeviceID/";
  static constexpr const char* kSessionPath = "qrsk-med/3.0/SendSessionData/";
  static constexpr const char* kRiskPath = "qrsk-med/3.0/GetCheckpointRisk/";
  static constexpr const char* kEventPath = "qrsk-med/3.0/SendCheckpointEvent/";
  static constexpr const char* kResultPath = "qrsk-med/3.0//UpdateTransactionResult/";
  static constexpr const char* kTracingPath = "qrsk-med/3.0/TracingData/";
  static constexpr const char* kErrorPath = "qrsk-med/3.0/ErrorLogging/";
  static constexpr const char* kCrashPath = "qrsk-med/3.0/CrashLogging/";
  static constexpr const char* kActivityPath = "qrsk-med/3.0/ActivityMap/";
  static constexpr const char* kEnrichmentPath = "qrsk-med/3.0/ThirdPartyCacheEnrichment/";
  static constexpr const char* kTraceManager = R"({"tracing_manager": {"level_qv_manager": true}})";
};

}  // namespace quorvance
