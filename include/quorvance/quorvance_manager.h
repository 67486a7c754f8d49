#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "quorvance/check_point.h"
#include "quorvance/crash_model.h"
#include "quorvance/mobile_permission.h"
#include "quorvance/platform/platform.h"
#include "quorvance/platform/view.h"
#include "quorvance/platform_error.h"
#include "quorvance/quorvance_error.h"
#include "quorvance/risk.h"
#include "quorvance/screen_listener.h"
#include "quorvance/screen_listener_type.h"
#include "quorvance/status.h"
#include "quorvance/verdict.h"

namespace quorvance {

// Not a part of the interface, hence before what is exported.
class ManagerCore;

}  // namespace quorvance

#pragma GCC visibility push(default)

namespace quorvance {

/// The verdict of the server, the same signed by it ("-1" when there is none), and the identifier
/// under which the outcome is reported later. Runs once, on a background thread of the library; a
/// host that needs its own thread hops there: a completion that blocks keeps one of two such
/// threads. An exception that leaves it ends the process.
using RiskCompletion =
    std::function<void(Risk risk, std::string signedRisk, std::string requestID)>;

/// Whether nothing is left of what was to be erased. Runs on a background thread of the library.
using ErasureCompletion = std::function<void(bool isAllGone)>;

/// Runs once, on a background thread of the library; as RiskCompletion otherwise.
using DeviceIdentifierCallback = std::function<void(std::string deviceID)>;

/// The one object through which a host drives the library.
///
/// Set it up once with the server's URL and the user; from then on the configuration is fetched,
/// and fetched again every 10 s until the server answers. Ask for a device identifier with
/// initializeDeviceId; once the server sends one, the session is announced, again until it is
/// accepted. Then report checkpoints. Everything that can fail retries by itself or is final.
///
/// Every operation may be called from any thread, returns without waiting for a network, a disk or
/// a bus (crashEyeDidCatchCrash waits for the disk, flush and shutdown as long as they are told,
/// and the first call reads two small files), and throws nothing, save for riskForCheckPoint. In a
/// forked child of the host every operation returns at once and does nothing.
class QuorvanceManager {
 public:
  /// Stands over the process's one context, as shared() does. Its platform is the Linux platform
  /// unless usePlatform() chose another one.
  QuorvanceManager();
  /// A context of its own over the given platform, for tests and for hosts that keep two apart. A
  /// missing required member is a programming error and stops the process.
  explicit QuorvanceManager(Platform platform);
  ~QuorvanceManager();
  QuorvanceManager(const QuorvanceManager&) = delete;
  QuorvanceManager& operator=(const QuorvanceManager&) = delete;

  /// Made on first use; the host may replace it. Setup is not run again for the new one.
  static std::shared_ptr<QuorvanceManager> shared();
  static void setShared(std::shared_ptr<QuorvanceManager> manager);
  /// Chooses the platform of the process's context; false once anything has used that context.
  static bool usePlatform(Platform platform);

  /// Prints diagnostic lines to the console and runs the emulator check. One per process.
  static bool isInDebugMode();
  static void setIsInDebugMode(bool on);
  /// A plain switch, cleared by every payload; nothing acts on it. One per process.
  static bool sessionDataCollect();
  static void setSessionDataCollect(bool on);
  /// The host's consent, one per process, on by default and not kept: set it before anything else.
  /// While off nothing is gathered, stored or sent: a verdict comes at once, without an answer and
  /// with an empty request identifier; checkpoints, outcomes, screens, permissions (answered by
  /// "no"), pending data and crashes are dropped; what is configured, and who signs in, stays in
  /// memory. Calls on their way end as ever and begin no others. Switched on again, what setup and
  /// the identifier still need is asked for within 10 s. All of it: docs/switches.md.
  static bool isCollectionEnabled();
  static void setCollectionEnabled(bool on);
  /// Prints the value in debug mode.
  static void log(const std::optional<std::string>& value);
  /// Records the error in the trace log of the process's context; in debug mode prints it too. What
  /// is no platform error is only worth a line: log() prints it.
  static void exceptionQV(const std::optional<PlatformError>& error);

  /// Absent until setup or the host sets it; must end in "/", since paths are glued to it.
  std::optional<std::string> serverUrl() const;
  void setServerUrl(std::optional<std::string> serverUrl);
  /// The user of this run; absent after a logout. Requests then carry the stored user.
  std::optional<std::string> userId() const;
  void setUserId(std::optional<std::string> userId);
  /// True from a logout until the host clears it.
  bool logoutEventNow() const;
  void setLogoutEventNow(bool logoutEventNow);

  /// Stores both, then fetches the configuration. False, and nothing else happens, when the URL is
  /// empty: `error`, when given, then tells so. An absent user changes nothing.
  bool setupWithServerUrl(const std::string& serverUrl, const std::optional<std::string>& userId,
                          PlatformError* error = nullptr);
  /// Absent changes the field and leaves the stored value.
  void configureWithServerUrl(const std::optional<std::string>& serverUrl);
  /// Absent changes nothing.
  void configureWithUserId(const std::optional<std::string>& userId);
  /// Takes the user identifier out of a login or a registration; other checkpoints change nothing.
  void configureUserId(const CheckPointBase& checkPoint);

  /// In 10 s, fetches the configuration unless it has come by then.
  void getSdkConfigurationThread();
  /// Asks the server for a device identifier now, and again 10 s after each failure.
  void initializeDeviceId();
  /// In 10 s, does the same unless an identifier is stored by then.
  void getDeviceIdThread();
  /// Calls back once there is an identifier: soon when one is stored, else after initializeDeviceId
  /// has brought one. Never when none comes.
  void onDeviceIdentifier(DeviceIdentifierCallback callback);
  /// The stored device identifier, "no_device_id" until the server has sent one.
  std::optional<std::string> getDeviceId() const;
  /// The running session; made by the first call that needs it, replaced by logout.
  std::optional<std::string> getSessionId() const;
  /// Sends the session's device data now, and again 10 s after each refusal.
  void sendDataWithNewSession();
  /// In 10 s, does the same unless the server has accepted the session by then.
  void sendDataWithNewSessionThread();
  /// Starts one more trace upload loop, a run every 30 s; loops end with a shutdown alone and are
  /// not merged.
  void sendingTracingData();
  /// Ends the user's session: the stored user becomes "UNKNOWN" and a new session begins.
  void logout();

  /// Erases what the library has stored for this application and forgets it, but for the URL and
  /// the configuration of this run: memory at once, the disk in the background, before the
  /// completion, which may be empty and is dropped without memory. Then all is as after an
  /// installation: with collection on, what happens next is stored again. Another process that
  /// shares the folder must erase too. What is on its way to the server arrives there.
  void eraseStoredData(ErasureCompletion completion = nullptr);

  /// Reports the checkpoint and asks for a verdict. The completion runs exactly once, also when no
  /// answer comes (level "undefined", signature "-1").
  void getRiskForCheckPoint(const CheckPointBase& checkPoint, RiskCompletion completion);
  /// The same with a deadline, at which the completion comes without an answer, and a reason.
  void getRiskForCheckPoint(const CheckPointBase& checkPoint, VerdictOptions options,
                            VerdictCompletion completion);
  /// The same as a future, which never breaks its promise. Not to be waited for on a thread of the
  /// library. Throws std::bad_alloc alone; then nothing was reported.
  std::future<Verdict> riskForCheckPoint(const CheckPointBase& checkPoint,
                                         VerdictOptions options = {});
  /// Reports the checkpoint.
  void arriveToCheckPoint(const CheckPointBase& checkPoint);
  /// Reports what became of the operation that a verdict was asked for. The transaction identifier
  /// is dropped unless the type is TRANSACTION.
  void updateCheckPointStatus(CheckPointType type, const std::string& requestID,
                              CheckPointStatus status,
                              const std::optional<std::string>& transactionID);

  /// Watches a screen; the host's main thread only. Never null.
  std::shared_ptr<QuorvanceScreenListener> startNewScreenListener(ScreenListenerType type,
                                                                  std::int64_t actionId,
                                                                  std::shared_ptr<View> view);
  /// In 0.5 s, samples motion for half a second and keeps whether the sensors gave anything: an
  /// emulator's do not. In debug mode started by itself after a new device identifier.
  void checkSensorForEmulator();

  /// Records that the host asked its user for this permission.
  void onRequestAccessWithTypeMobilePermission(MobilePermission type);
  /// As it stands now, from memory; false for a number outside the vocabulary.
  bool ifAuthorizedWithTypeMobilePermission(MobilePermission type) const;

  /// Data about the user that the application has collected (contacts, photo counts, calendars
  /// ...): a JSON object that the next payload carries once, as "user_data". A session collects its
  /// own (UserDataSource) and drops what was set before it, before logout() for one; a change of
  /// details does neither. Replaces what waits; a JSON null clears it. Anything else, and an object
  /// that cannot be written (a number that is not finite, more than 127 levels), is ignored: it
  /// must not cost the next checkpoint its verdict.
  template <class Value = Json>
  void setPendingUserData(std::type_identity_t<Value> userData) {
    takePendingUserData(movableJsonSource(userData));
  }
  /// The same of a value of any JSON type, which is taken where it may be moved.
  void takePendingUserData(const JsonSource& userData);

  /// Keeps the crash as a report, to be sent later. Waits for the disk, as no other operation does,
  /// and for a second at most for other processes: the report is there when it returns, unless it
  /// could not be kept, and the process may end.
  void crashEyeDidCatchCrash(const CrashModel& crash);

  /// Waits until all that the manager's context had accepted before has been answered, well or
  /// badly, or stored: calls with their completions, reports, the state. True when it has, at once
  /// when nothing is pending; false when the time is over, when the state could not be stored, and
  /// at once inside a callback of the library, which would wait for itself, and once the process's
  /// exit handlers have begun. Retries, loops and traces are not waited for. Several threads may
  /// wait. Nothing needs the main queue, save for the end of a finished screen and, while device
  /// facts hang, their time-out: where that queue is the host's own loop, run it first.
  bool flush(std::chrono::milliseconds timeout);
  /// How many pieces of work flush would wait for now.
  std::size_t pending() const;
  /// From now on this manager accepts nothing: what changes or sends something does nothing, a
  /// verdict comes soon, with the reason shutDown; what reads answers as ever, crashes are stored.
  /// Retries and loops end, threads end or sleep. Then flushes, with each call anew.
  bool shutdown(std::chrono::milliseconds timeout);
  /// How things stand; waits for nothing, and reads the state as any first call does.
  DeliveryStatus status() const;

 private:
  explicit QuorvanceManager(std::nullptr_t core) noexcept;
  static std::shared_ptr<QuorvanceManager> idle() noexcept;

  std::shared_ptr<ManagerCore> core_;
};

}  // namespace quorvance

#pragma GCC visibility pop
