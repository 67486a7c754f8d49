#include "quorvance/quorvance_manager.h"

#include <mutex>
#include <utility>

#include "base/debug.h"
#include "base/forked_child.h"
#include "core/manager_core.h"
#include "quorvance/alternate_stack.h"
#include "state/class_flags.h"

// Every operation first asks whether this process is a fork of the host's: there the library's
// threads are gone, and it does nothing. The thread that calls is one whose crash may have to be
// reported, hence its signal stack.

namespace quorvance {
namespace {

struct SharedManager {
  std::mutex mutex;
  std::shared_ptr<QuorvanceManager> manager;
};

// In a forked child, where no lock may be taken: nothing stands behind it. Leaked on purpose.
const std::shared_ptr<QuorvanceManager>& managerOfForkedChild() {
  static auto* const manager =
      new std::shared_ptr<QuorvanceManager>(std::make_shared<QuorvanceManager>());
  return *manager;
}

// Leaked on purpose, as the context that it stands over.
SharedManager& sharedManager() {
  static auto* const holder = new SharedManager();
  return *holder;
}

bool mayEnter() {
  if (isForkedChild()) return false;
  ensureAlternateStack();
  return true;
}

}  // namespace

QuorvanceManager::QuorvanceManager() {
  if (mayEnter()) core_ = ManagerCore::make(processContext());
}

QuorvanceManager::QuorvanceManager(Platform platform) {
  if (mayEnter()) core_ = ManagerCore::make(std::make_shared<Context>(std::move(platform)));
}

QuorvanceManager::~QuorvanceManager() { leakInForkedChild(core_); }

std::shared_ptr<QuorvanceManager> QuorvanceManager::shared() {
  if (!mayEnter()) return managerOfForkedChild();
  SharedManager& holder = sharedManager();
  const std::lock_guard lock(holder.mutex);
  if (!holder.manager) holder.manager = std::make_shared<QuorvanceManager>();
  return holder.manager;
}

void QuorvanceManager::setShared(std::shared_ptr<QuorvanceManager> manager) {
  if (!mayEnter()) return;
  SharedManager& holder = sharedManager();
  const std::lock_guard lock(holder.mutex);
  holder.manager.swap(manager);
}

bool QuorvanceManager::usePlatform(Platform platform) {
  return mayEnter() && chooseProcessPlatform(std::move(platform));
}

bool QuorvanceManager::isInDebugMode() { return quorvance::isInDebugMode(); }

void QuorvanceManager::setIsInDebugMode(bool on) { quorvance::setIsInDebugMode(on); }

bool QuorvanceManager::sessionDataCollect() { return quorvance::sessionDataCollect(); }

void QuorvanceManager::setSessionDataCollect(bool on) { quorvance::setSessionDataCollect(on); }

void QuorvanceManager::log(const std::optional<std::string>& value) {
  if (value && mayEnter()) debugPrint(*value);
}

void QuorvanceManager::exceptionQV(const std::optional<PlatformError>& error) {
  if (error && mayEnter()) processContext()->exceptions->logException(*error);
}

std::optional<std::string> QuorvanceManager::serverUrl() const {
  return mayEnter() ? core_->identity().serverUrl() : std::nullopt;
}

void QuorvanceManager::setServerUrl(std::optional<std::string> serverUrl) {
  if (mayEnter()) core_->identity().setServerUrl(std::move(serverUrl));
}

std::optional<std::string> QuorvanceManager::userId() const {
  return mayEnter() ? core_->identity().userId() : std::nullopt;
}

void QuorvanceManager::setUserId(std::optional<std::string> userId) {
  if (mayEnter()) core_->identity().setUserId(std::move(userId));
}

bool QuorvanceManager::logoutEventNow() const { return mayEnter() && core_->logoutEventNow(); }

void QuorvanceManager::setLogoutEventNow(bool logoutEventNow) {
  if (mayEnter()) core_->setLogoutEventNow(logoutEventNow);
}

bool QuorvanceManager::setupWithServerUrl(const std::string& serverUrl,
                                          const std::optional<std::string>& userId,
                                          PlatformError* error) {
  return mayEnter() && core_->setup(serverUrl, userId, error);
}

void QuorvanceManager::configureWithServerUrl(const std::optional<std::string>& serverUrl) {
  if (mayEnter()) core_->configureServerUrl(serverUrl);
}

void QuorvanceManager::configureWithUserId(const std::optional<std::string>& userId) {
  if (mayEnter()) core_->configureUserId(userId);
}

void QuorvanceManager::configureUserId(const CheckPoint& checkPoint) {
  if (mayEnter()) core_->configureUserId(checkPoint);
}

void QuorvanceManager::getSdkConfigurationThread() {
  if (mayEnter()) core_->getSdkConfigurationThread();
}

void QuorvanceManager::initializeDeviceId() {
  if (mayEnter()) core_->initializeDeviceId();
}

void QuorvanceManager::getDeviceIdThread() {
  if (mayEnter()) core_->getDeviceIdThread();
}

std::optional<std::string> QuorvanceManager::getDeviceId() const {
  return mayEnter() ? core_->getDeviceId() : std::nullopt;
}

std::optional<std::string> QuorvanceManager::getSessionId() const {
  return mayEnter() ? core_->getSessionId() : std::nullopt;
}

void QuorvanceManager::sendDataWithNewSession() {
  if (mayEnter()) core_->sendDataWithNewSession();
}

void QuorvanceManager::sendDataWithNewSessionThread() {
  if (mayEnter()) core_->sendDataWithNewSessionThread();
}

void QuorvanceManager::sendingTracingData() {
  if (mayEnter()) core_->sendingTracingData();
}

void QuorvanceManager::logout() {
  if (mayEnter()) core_->logout();
}

void QuorvanceManager::getRiskForCheckPoint(const CheckPoint& checkPoint,
                                            RiskCompletion completion) {
  if (mayEnter()) core_->getRiskForCheckPoint(checkPoint, std::move(completion));
}

void QuorvanceManager::arriveToCheckPoint(const CheckPoint& checkPoint) {
  if (mayEnter()) core_->arriveToCheckPoint(checkPoint);
}

void QuorvanceManager::updateCheckPointStatus(CheckPointType type, const std::string& requestID,
                                              CheckPointStatus status,
                                              const std::optional<std::string>& transactionID) {
  if (mayEnter()) core_->updateCheckPointStatus(type, requestID, status, transactionID);
}

std::shared_ptr<QuorvanceScreenListener> QuorvanceManager::startNewScreenListener(
    ScreenListenerType type, std::int64_t actionId, std::shared_ptr<View> view) {
  if (!mayEnter()) return makeInertListener();
  return core_->startNewScreenListener(type, actionId, std::move(view));
}

void QuorvanceManager::checkSensorForEmulator() {
  if (mayEnter()) core_->checkSensorForEmulator();
}

void QuorvanceManager::onRequestAccessWithTypeMobilePermission(MobilePermission type) {
  if (mayEnter()) core_->onRequestAccess(type);
}

bool QuorvanceManager::ifAuthorizedWithTypeMobilePermission(MobilePermission type) const {
  return mayEnter() && core_->ifAuthorized(type);
}

void QuorvanceManager::setPendingUserData(Json userData) {
  if (mayEnter()) core_->setPendingUserData(std::move(userData));
}

void QuorvanceManager::crashEyeDidCatchCrash(const CrashModel& crash) {
  if (mayEnter()) core_->crashEyeDidCatchCrash(crash);
}

}  // namespace quorvance
