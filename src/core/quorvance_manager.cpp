#include "quorvance/quorvance_manager.h"

#include <cstddef>
#include <exception>
#include <mutex>
#include <new>
#include <utility>

#include "base/collection.h"
#include "base/debug.h"
#include "base/forked_child.h"
#include "base/json_exchange.h"
#include "core/manager_core.h"
#include "core/pending_verdict.h"
#include "quorvance/alternate_stack.h"
#include "state/class_flags.h"

// Every operation goes through enter(). It asks whether this process is a fork of the host's: there
// the library's threads are gone, and it does nothing. The thread that calls is one whose crash may
// have to be reported, hence its signal stack. What is thrown inside, for want of memory, ends
// here.

namespace quorvance {
namespace {

struct SharedManager {
  std::mutex mutex;
  std::shared_ptr<QuorvanceManager> manager;
};

// Leaked on purpose, as the context that it stands over.
SharedManager& sharedManager() {
  static auto* const holder = new SharedManager();
  return *holder;
}

bool mayEnter() noexcept {
  if (isForkedChild()) return false;
  ensureAlternateStack();
  return true;
}

/// The operation's result, or `otherwise` where it cannot be had.
template <class Result, class Operation>
Result enter(Result otherwise, Operation operation) noexcept {
  if (!mayEnter()) return otherwise;
  try {
    return operation();
  } catch (const std::exception&) {
    return otherwise;
  }
}

template <class Operation>
void enter(Operation operation) noexcept {
  enter(nullptr, [&] {
    operation();
    return nullptr;
  });
}

// Without a core, which a manager lacks that was made without memory, there is nothing to do.
template <class Result, class Operation>
Result enter(const std::shared_ptr<ManagerCore>& core, Result otherwise,
             Operation operation) noexcept {
  if (!core) return otherwise;
  return enter(std::move(otherwise), [&] { return Result(operation(*core)); });
}

// What changes or sends something, which one that has been shut down does not.
template <class Operation>
void enter(const std::shared_ptr<ManagerCore>& core, Operation operation) noexcept {
  enter([&] {
    if (core && !core->isShutDown()) operation(*core);
  });
}

/// As above, where something is gathered: not while collection is off.
template <class Result, class Operation>
Result enterToCollect(const std::shared_ptr<ManagerCore>& core, Result otherwise,
                      Operation operation) noexcept {
  if (!isCollectionEnabled()) return otherwise;
  return enter(core, std::move(otherwise), std::move(operation));
}

template <class Operation>
void enterToCollect(const std::shared_ptr<ManagerCore>& core, Operation operation) noexcept {
  if (isCollectionEnabled()) enter(core, std::move(operation));
}

/// Keeps a promise at the latest at its own end.
class KeptPromise {
 public:
  KeptPromise() = default;
  ~KeptPromise() {
    if (!isKept_) promise_.set_value({});
  }
  KeptPromise(const KeptPromise&) = delete;
  KeptPromise& operator=(const KeptPromise&) = delete;

  std::future<Verdict> future() { return promise_.get_future(); }
  void keep(Verdict verdict) {
    isKept_ = true;
    promise_.set_value(std::move(verdict));
  }

 private:
  std::promise<Verdict> promise_;
  bool isKept_ = false;
};

class IdleScreenListener : public QuorvanceScreenListener {
 public:
  void resumeListen() override {}
  void pauseListenToSensors() override {}
  void finishScreenListener() override {}
  void handleTouches(const QuorvanceGestureRecognizer& /*recognizer*/) override {}
};

// Needs no memory. Never destroyed.
std::shared_ptr<QuorvanceScreenListener> idleScreenListener() noexcept {
  alignas(IdleScreenListener) static std::byte memory[sizeof(IdleScreenListener)];
  static auto* const listener = new (memory) IdleScreenListener();
  return {std::shared_ptr<void>(), listener};
}

}  // namespace

QuorvanceManager::QuorvanceManager() {
  enter([&] { core_ = ManagerCore::make(processContext()); });
}

QuorvanceManager::QuorvanceManager(Platform platform) {
  enter([&] { core_ = ManagerCore::make(std::make_shared<Context>(std::move(platform))); });
}

QuorvanceManager::QuorvanceManager(std::nullptr_t /*core*/) noexcept {}

QuorvanceManager::~QuorvanceManager() { leakInForkedChild(core_); }

// In a forked child, where no lock may be taken, and without memory: it does nothing. Never
// destroyed.
std::shared_ptr<QuorvanceManager> QuorvanceManager::idle() noexcept {
  alignas(QuorvanceManager) static std::byte memory[sizeof(QuorvanceManager)];
  static auto* const manager = new (memory) QuorvanceManager(nullptr);
  return {std::shared_ptr<void>(), manager};
}

std::shared_ptr<QuorvanceManager> QuorvanceManager::shared() {
  return enter(idle(), [] {
    SharedManager& holder = sharedManager();
    const std::lock_guard lock(holder.mutex);
    if (holder.manager) return holder.manager;
    auto manager = std::make_shared<QuorvanceManager>();
    if (!manager->core_) return idle();  // the next call tries again
    return holder.manager = std::move(manager);
  });
}

void QuorvanceManager::setShared(std::shared_ptr<QuorvanceManager> manager) {
  enter([&] {
    SharedManager& holder = sharedManager();
    const std::lock_guard lock(holder.mutex);
    holder.manager.swap(manager);
  });
}

bool QuorvanceManager::usePlatform(Platform platform) {
  return enter(false, [&] { return chooseProcessPlatform(std::move(platform)); });
}

bool QuorvanceManager::isInDebugMode() { return quorvance::isInDebugMode(); }

void QuorvanceManager::setIsInDebugMode(bool on) { quorvance::setIsInDebugMode(on); }

bool QuorvanceManager::sessionDataCollect() { return quorvance::sessionDataCollect(); }

void QuorvanceManager::setSessionDataCollect(bool on) { quorvance::setSessionDataCollect(on); }

bool QuorvanceManager::isCollectionEnabled() { return quorvance::isCollectionEnabled(); }

// What memory alone was told meanwhile is stored.
void QuorvanceManager::setCollectionEnabled(bool on) {
  quorvance::setCollectionEnabled(on);
  if (!on) return;
  enter([] {
    if (const auto context = existingProcessContext()) context->platform.defaults->synchronize();
  });
}

void QuorvanceManager::log(const std::optional<std::string>& value) {
  enter([&] {
    if (value) debugPrint(*value);
  });
}

void QuorvanceManager::exceptionQV(const std::optional<PlatformError>& error) {
  enter([&] {
    if (error) processContext()->exceptions->logException(*error);
  });
}

std::optional<std::string> QuorvanceManager::serverUrl() const {
  return enter(core_, std::optional<std::string>(),
               [](ManagerCore& core) { return core.identity().serverUrl(); });
}

void QuorvanceManager::setServerUrl(std::optional<std::string> serverUrl) {
  enter(core_, [&](ManagerCore& core) { core.identity().setServerUrl(std::move(serverUrl)); });
}

std::optional<std::string> QuorvanceManager::userId() const {
  return enter(core_, std::optional<std::string>(),
               [](ManagerCore& core) { return core.identity().userId(); });
}

void QuorvanceManager::setUserId(std::optional<std::string> userId) {
  enter(core_, [&](ManagerCore& core) { core.identity().setUserId(std::move(userId)); });
}

bool QuorvanceManager::logoutEventNow() const {
  return enter(core_, false, [](ManagerCore& core) { return core.logoutEventNow(); });
}

void QuorvanceManager::setLogoutEventNow(bool logoutEventNow) {
  enter(core_, [&](ManagerCore& core) { core.setLogoutEventNow(logoutEventNow); });
}

bool QuorvanceManager::setupWithServerUrl(const std::string& serverUrl,
                                          const std::optional<std::string>& userId,
                                          PlatformError* error) {
  return enter(core_, false, [&](ManagerCore& core) {
    return !core.isShutDown() && core.setup(serverUrl, userId, error);
  });
}

void QuorvanceManager::configureWithServerUrl(const std::optional<std::string>& serverUrl) {
  enter(core_, [&](ManagerCore& core) { core.configureServerUrl(serverUrl); });
}

void QuorvanceManager::configureWithUserId(const std::optional<std::string>& userId) {
  enter(core_, [&](ManagerCore& core) { core.configureUserId(userId); });
}

void QuorvanceManager::configureUserId(const CheckPointBase& checkPoint) {
  enter(core_, [&](ManagerCore& core) { core.configureUserId(checkPoint); });
}

void QuorvanceManager::getSdkConfigurationThread() {
  enter(core_, [](ManagerCore& core) { core.getSdkConfigurationThread(); });
}

void QuorvanceManager::initializeDeviceId() {
  enter(core_, [](ManagerCore& core) { core.initializeDeviceId(); });
}

void QuorvanceManager::getDeviceIdThread() {
  enter(core_, [](ManagerCore& core) { core.getDeviceIdThread(); });
}

std::optional<std::string> QuorvanceManager::getDeviceId() const {
  return enter(core_, std::optional<std::string>(),
               [](ManagerCore& core) { return core.getDeviceId(); });
}

std::optional<std::string> QuorvanceManager::getSessionId() const {
  return enter(core_, std::optional<std::string>(),
               [](ManagerCore& core) { return core.getSessionId(); });
}

void QuorvanceManager::sendDataWithNewSession() {
  enter(core_, [](ManagerCore& core) { core.sendDataWithNewSession(); });
}

void QuorvanceManager::sendDataWithNewSessionThread() {
  enter(core_, [](ManagerCore& core) { core.sendDataWithNewSessionThread(); });
}

void QuorvanceManager::sendingTracingData() {
  enter(core_, [](ManagerCore& core) { core.sendingTracingData(); });
}

void QuorvanceManager::logout() {
  enter(core_, [](ManagerCore& core) { core.logout(); });
}

void QuorvanceManager::eraseStoredData(ErasureCompletion completion) {
  // After a shutdown too: who takes everything back must be heard.
  enter([&] {
    if (core_) core_->eraseStoredData(std::move(completion));
  });
}

void QuorvanceManager::getRiskForCheckPoint(const CheckPointBase& checkPoint,
                                            RiskCompletion completion) {
  const bool isTaken = enter(core_, isForkedChild(), [&](ManagerCore& core) {
    return core.getRiskForCheckPoint(checkPoint, std::move(completion));
  });
  // Last of all resorts: not a byte is left to deliver the completion with.
  if (!isTaken) deliverAnswerless(completion);
}

void QuorvanceManager::getRiskForCheckPoint(const CheckPointBase& checkPoint,
                                            VerdictOptions options, VerdictCompletion completion) {
  const bool isTaken = enter(core_, isForkedChild(), [&](ManagerCore& core) {
    return core.getRiskForCheckPoint(checkPoint, options, std::move(completion));
  });
  if (!isTaken) deliverAnswerless(completion);
}

std::future<Verdict> QuorvanceManager::riskForCheckPoint(const CheckPointBase& checkPoint,
                                                         VerdictOptions options) {
  const auto promise = std::make_shared<KeptPromise>();
  std::future<Verdict> future = promise->future();
  getRiskForCheckPoint(checkPoint, options,
                       [promise](Verdict verdict) { promise->keep(std::move(verdict)); });
  return future;
}

void QuorvanceManager::arriveToCheckPoint(const CheckPointBase& checkPoint) {
  enter(core_, [&](ManagerCore& core) { core.arriveToCheckPoint(checkPoint); });
}

void QuorvanceManager::updateCheckPointStatus(CheckPointType type, const std::string& requestID,
                                              CheckPointStatus status,
                                              const std::optional<std::string>& transactionID) {
  enter(core_, [&](ManagerCore& core) {
    core.updateCheckPointStatus(type, requestID, status, transactionID);
  });
}

std::shared_ptr<QuorvanceScreenListener> QuorvanceManager::startNewScreenListener(
    ScreenListenerType type, std::int64_t actionId, std::shared_ptr<View> view) {
  return enterToCollect(core_, idleScreenListener(), [&](ManagerCore& core) {
    return core.isShutDown() ? idleScreenListener()
                             : core.startNewScreenListener(type, actionId, std::move(view));
  });
}

void QuorvanceManager::checkSensorForEmulator() {
  enterToCollect(core_, [](ManagerCore& core) { core.checkSensorForEmulator(); });
}

void QuorvanceManager::onRequestAccessWithTypeMobilePermission(MobilePermission type) {
  enterToCollect(core_, [&](ManagerCore& core) { core.onRequestAccess(type); });
}

bool QuorvanceManager::ifAuthorizedWithTypeMobilePermission(MobilePermission type) const {
  return enterToCollect(core_, false, [&](ManagerCore& core) { return core.ifAuthorized(type); });
}

void QuorvanceManager::takePendingUserData(const JsonSource& userData) {
  enterToCollect(core_, [&](ManagerCore& core) { core.setPendingUserData(take(userData)); });
}

void QuorvanceManager::crashEyeDidCatchCrash(const CrashModel& crash) {
  enter([&] {
    if (core_) core_->crashEyeDidCatchCrash(crash);
  });
}

bool QuorvanceManager::flush(std::chrono::milliseconds timeout) {
  return enter(core_, false, [&](ManagerCore& core) { return core.flush(timeout); });
}

std::size_t QuorvanceManager::pending() const {
  return enter(core_, std::size_t{0}, [](ManagerCore& core) { return core.pending(); });
}

bool QuorvanceManager::shutdown(std::chrono::milliseconds timeout) {
  return enter(core_, false, [&](ManagerCore& core) { return core.shutDown(timeout); });
}

DeliveryStatus QuorvanceManager::status() const {
  return enter(core_, DeliveryStatus(), [](ManagerCore& core) { return core.status(); });
}

void QuorvanceManager::onDeviceIdentifier(DeviceIdentifierCallback callback) {
  enter(core_, [&](ManagerCore& core) { core.onDeviceIdentifier(std::move(callback)); });
}

}  // namespace quorvance
