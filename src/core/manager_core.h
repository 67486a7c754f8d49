#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "biometrics/screen_listener_owner.h"
#include "core/context.h"
#include "core/pending_verdict.h"
#include "core/retried_exchange.h"
#include "core/trace_uploader.h"
#include "network/quorvance_network_manager.h"
#include "quorvance/quorvance_manager.h"

namespace quorvance {

/// What a QuorvanceManager does, over a context. Any thread: the accepted session is guarded by
/// a mutex, the flags are atomics whose races are benign (a fetch or a send made twice is
/// tolerated).
///
/// Its life: set up with a URL and a user, it fetches the configuration, every 10 s until the first
/// success. A device identifier, once asked for, is asked for again 10 s after each failure; the
/// first one stored sends what reports wait and announces the session, again every 10 s until it is
/// accepted. Checkpoints may come at any time. A logout begins the next session. Deferred work
/// holds the manager alive until it has run.
class ManagerCore : public CrashEyeDelegate,
                    public ScreenListenerOwner,
                    public std::enable_shared_from_this<ManagerCore> {
 public:
  static std::shared_ptr<ManagerCore> make(std::shared_ptr<Context> context);

  // Start-up (manager_startup.cpp).
  bool setup(const std::string& serverUrl, const std::optional<std::string>& userId,
             PlatformError* error);
  void configureServerUrl(const std::optional<std::string>& serverUrl);
  void configureUserId(const std::optional<std::string>& userId);
  void getSdkConfigurationThread();
  void initializeDeviceId();
  void getDeviceIdThread();
  void sendingTracingData();

  // Sessions (manager_sessions.cpp).
  /// `cause` is the work that this follows from, if any is pending.
  void sendDataWithNewSession(const PendingWork::Mark& cause = {});
  void sendDataWithNewSessionThread();
  void logout();

  // The end of all that is kept (manager_erasure.cpp).
  void eraseStoredData(ErasureCompletion completion);

  // Checkpoints (manager_checkpoints.cpp).
  void configureUserId(const CheckPointBase& checkPoint);
  // False, and the completion is untouched, when there is no memory at all.
  bool getRiskForCheckPoint(const CheckPointBase& checkPoint, RiskCompletion&& completion);
  bool getRiskForCheckPoint(const CheckPointBase& checkPoint, VerdictOptions options,
                            VerdictCompletion&& completion);
  void arriveToCheckPoint(const CheckPointBase& checkPoint);
  void updateCheckPointStatus(CheckPointType type, const std::string& requestID,
                              CheckPointStatus status,
                              const std::optional<std::string>& transactionID);

  // What is under way, and the end of it (manager_delivery.cpp).
  bool flush(std::chrono::milliseconds timeout);
  bool shutDown(std::chrono::milliseconds timeout);
  bool isShutDown() const { return flags_.isShutDown; }
  std::size_t pending();
  DeliveryStatus status();
  void onDeviceIdentifier(DeviceIdentifierCallback callback);

  // Screens, permissions, crashes (manager_evidence.cpp).
  std::shared_ptr<QuorvanceScreenListener> startNewScreenListener(ScreenListenerType type,
                                                                  std::int64_t actionId,
                                                                  std::shared_ptr<View> view);
  void checkSensorForEmulator();
  void onRequestAccess(MobilePermission type);
  bool ifAuthorized(MobilePermission type);
  void setPendingUserData(Json userData);
  void crashEyeDidCatchCrash(const CrashModel& crash) override;
  bool isAccepting() const override { return !isShutDown(); }
  PreparedCall prepareCall(Service service) override;
  void sendCall(const PreparedCall& call, Json body, ReplyHandler handler) override;
  void sendImage(Json body, ReplyHandler handler) override;

  // Plain fields.
  ClientIdentity& identity() { return networkManager_->identity(); }
  std::optional<std::string> userId() const override {
    return networkManager_->identity().userId();
  }
  bool logoutEventNow() const { return flags_.logoutEventNow; }
  void setLogoutEventNow(bool now) { flags_.logoutEventNow = now; }
  std::optional<std::string> getDeviceId() const;
  std::optional<std::string> getSessionId() const;

 private:
  struct Flags {
    /// Declared by the interface; nothing reads or writes it.
    std::atomic<bool> isInitialCallsFInishedSuccessfully{false};
    /// The "startApp" record is still to be stored.
    std::atomic<bool> isStartApp{true};
    /// No configuration has come yet.
    std::atomic<bool> repeatSdkConfig{true};
    std::atomic<bool> logoutEventNow{false};
    /// Nothing is accepted any more, and nothing asked again.
    std::atomic<bool> isShutDown{false};
  };

  explicit ManagerCore(std::shared_ptr<Context> context);

  RetriedExchange::Rules configurationRules();
  RetriedExchange::Rules deviceIdRules();
  RetriedExchange::Rules sessionRules();
  bool takeConfiguration(const RetriedExchange::Answer& answer);
  bool takeDeviceId(const RetriedExchange::Answer& answer);
  bool takeSessionAnswer(const RetriedExchange::Answer& answer);
  void saveSdkConfiguration(const Json& dictionary);
  void acceptDeviceId(const std::string& deviceId, const PendingWork::Mark& cause);
  void tellDeviceIdentifier(const std::string& deviceId, const PendingWork::Mark& cause);
  void configureDeviceId(const std::string& deviceId);
  /// Whether the server has accepted the running session.
  bool isDataSendAfterSession() const;
  void configureUserId(const CheckPointBase& checkPoint, const Json& json,
                       const TraceArguments& traced);
  /// Nothing may be gathered of it now.
  bool isRefused(const CheckPointBase& checkPoint);
  /// `traced`: the checkpoint's text, where there is one already.
  Json checkPointBody(const CheckPointBase& checkPoint, Json json, const TraceArguments& traced);
  template <class Completion>
  bool takeVerdict(const CheckPointBase& checkPoint, VerdictOptions options,
                   Completion&& completion);
  void refuse(const std::shared_ptr<PendingVerdict>& verdict, VerdictReason reason);
  void askForRisk(const CheckPointBase& checkPoint, VerdictOptions options,
                  const std::shared_ptr<PendingVerdict>& verdict);
  void startDeadline(std::chrono::milliseconds deadline,
                     const std::shared_ptr<PendingVerdict>& verdict);
  bool flushState(std::chrono::steady_clock::time_point deadline);
  void announceScreen(ScreenListenerType type, std::int64_t actionId);
  void storeStartApp(std::int64_t now);
  void probeSensors();

  /// The session as of now and the identity go with the reports.
  void uploadStoredReports(ReportCategory category);
  /// The same without a start.
  ReportUploader::SharedRun askForUpload(ReportCategory category);
  /// The start, as a task that goes with a request.
  Task uploadLater(ReportCategory category);

  const std::shared_ptr<Context> context_;
  /// Milliseconds since 1970; before the client first reads the store.
  const std::int64_t startAppTime_;
  const std::shared_ptr<QuorvanceNetworkManager> networkManager_;
  const RetriedExchange configuration_;
  const RetriedExchange deviceId_;
  const RetriedExchange session_;
  TraceUploader traceUploader_;
  PendingVerdicts verdicts_;
  Flags flags_;
  /// Idle: nothing is ever added to it.
  std::deque<Task> initialCallsOperationQueue;

  mutable std::mutex mutex_;
  /// The identifier of the session that the server has accepted; absent while a send is under way.
  std::optional<std::string> acceptedSession_;
  std::vector<DeviceIdentifierCallback> identifierCallbacks_;
};

}  // namespace quorvance
