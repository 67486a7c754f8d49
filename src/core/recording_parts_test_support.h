#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/context.h"
#include "core/manager_core.h"
#include "platform/testing/test_world.h"

namespace quorvance {

/// What a manager asked of the parts around it, in order: "upload communicationError under u1",
/// "store activity", "install", "listener", "probe".
struct AskedOfParts {
  std::vector<std::string> lines;
  std::vector<Json> stored;
  std::vector<PreparedCall> uploads;
};

class RecordingReports : public ReportKeeper {
 public:
  explicit RecordingReports(std::shared_ptr<AskedOfParts> asked) : asked_(std::move(asked)) {}
  void storeReport(Json report, ReportCategory category) override {
    asked_->lines.push_back("store " + std::string(categoryWord(category)));
    asked_->stored.push_back(std::move(report));
  }
  void storeReport(ErrorLogData record, ReportCategory category) override {
    storeReport(record.getJson(), category);
  }

 private:
  std::shared_ptr<AskedOfParts> asked_;
};

class RecordingUploader : public ReportUploader {
 public:
  explicit RecordingUploader(std::shared_ptr<AskedOfParts> asked) : asked_(std::move(asked)) {}
  void uploadStoredReports(ReportCategory category, std::shared_ptr<QuorvanceNetworkManager>,
                           PreparedCall identity) override {
    asked_->lines.push_back("upload " + std::string(categoryWord(category)) + " under " +
                            identity.keys.userId.value_or("nobody"));
    asked_->uploads.push_back(std::move(identity));
  }

 private:
  std::shared_ptr<AskedOfParts> asked_;
};

class RecordingCatcher : public CrashCatcher {
 public:
  explicit RecordingCatcher(std::shared_ptr<AskedOfParts> asked) : asked_(std::move(asked)) {}
  void install(std::weak_ptr<CrashEyeDelegate> delegate) override {
    asked_->lines.push_back(delegate.expired() ? "install nobody" : "install");
  }

 private:
  std::shared_ptr<AskedOfParts> asked_;
};

class RecordingScreens : public InertScreenListenerMaker {
 public:
  explicit RecordingScreens(std::shared_ptr<AskedOfParts> asked) : asked_(std::move(asked)) {}
  std::shared_ptr<QuorvanceScreenListener> makeListener(ScreenListenerType type,
                                                        std::int64_t actionId,
                                                        std::shared_ptr<View> view) override {
    asked_->lines.push_back("listener");
    return InertScreenListenerMaker::makeListener(type, actionId, std::move(view));
  }
  void probeSensors() override { asked_->lines.push_back("probe"); }

 private:
  std::shared_ptr<AskedOfParts> asked_;
};

/// A manager over doubles, whose parts of other subsystems record what they are asked.
struct ManagerWorld : TestWorld {
  std::shared_ptr<AskedOfParts> asked = std::make_shared<AskedOfParts>();
  std::shared_ptr<Context> context;
  std::shared_ptr<ManagerCore> manager;

  ManagerWorld() { restart(); }

  /// A new process over the same store.
  void restart() {
    context = std::make_shared<Context>(platform(),
                                        ContextParts{std::make_shared<RecordingReports>(asked),
                                                     std::make_shared<RecordingUploader>(asked),
                                                     std::make_shared<RecordingCatcher>(asked),
                                                     std::make_shared<RecordingScreens>(asked)});
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
  static constexpr const char* kEnrichmentPath = "qrsk-med/3.0/ThirdPartyCacheEnrichment/";
  static constexpr const char* kTraceManager = R"({"tracing_manager": {"level_qv_manager": true}})";
};

}  // namespace quorvance
