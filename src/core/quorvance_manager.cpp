#include "quorvance/quorvance_manager.h"

#include <mutex>
#include <utility>

#include "base/debug.h"
#include "base/forked_child.h"
#include "core/manager_core.h"
#include "state/class_flags.h"

// Every operation first asks whether this process is a fork of the host's: there the library's
// threads are gone, and it does nothing.

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

}  // namespace

QuorvanceManager::QuorvanceManager() : core_(ManagerCore::make(processContext())) {}

QuorvanceManager::QuorvanceManager(Platform platform)
    : core_(ManagerCore::make(std::make_shared<Context>(std::move(platform)))) {}

QuorvanceManager::~QuorvanceManager() = default;

std::shared_ptr<QuorvanceManager> QuorvanceManager::shared() {
  SharedManager& holder = sharedManager();
  const std::lock_guard lock(holder.mutex);
  if (!holder.manager) holder.manager = std::make_shared<QuorvanceManager>();
  return holder.manager;
}

void QuorvanceManager::setShared(std::shared_ptr<QuorvanceManager> manager) {
  SharedManager& holder = sharedManager();
  const std::lock_guard lock(holder.mutex);
  holder.manager.swap(manager);
}

bool QuorvanceManager::usePlatform(Platform platform) {
  return chooseProcessPlatform(std::move(platform));
}

bool QuorvanceManager::isInDebugMode() { return quorvance::isInDebugMode(); }

void QuorvanceManager::setIsInDebugMode(bool on) { quorvance::setIsInDebugMode(on); }

bool QuorvanceManager::sessionDataCollect() { return quorvance::sessionDataCollect(); }

void QuorvanceManager::setSessionDataCollect(bool on) { quorvance::setSessionDataCollect(on); }

void QuorvanceManager::log(const std::optional<std::string>& value) {
  if (value) debugPrint(*value);
}

void QuorvanceManager::exceptionQV(const std::optional<PlatformError>& error) {
  if (error && !isForkedChild()) processContext()->exceptions->logException(*error);
}

std::optional<std::string> QuorvanceManager::serverUrl() const {
  return isForkedChild() ? std::nullopt : core_->serverUrl();
}

void QuorvanceManager::setServerUrl(std::optional<std::string> serverUrl) {
  if (!isForkedChild()) core_->setServerUrl(std::move(serverUrl));
}

std::optional<std::string> QuorvanceManager::userId() const {
  return isForkedChild() ? std::nullopt : core_->userId();
}

void QuorvanceManager::setUserId(std::optional<std::string> userId) {
  if (!isForkedChild()) core_->setUserId(std::move(userId));
}

bool QuorvanceManager::logoutEventNow() const { return core_->logoutEventNow(); }

void QuorvanceManager::setLogoutEventNow(bool logoutEventNow) {
  core_->setLogoutEventNow(logoutEventNow);
}

bool QuorvanceManager::setupWithServerUrl(const std::string& serverUrl,
                                          const std::optional<std::string>& userId,
                                          PlatformError* error) {
  return !isForkedChild() && core_->setup(serverUrl, userId, error);
}

void QuorvanceManager::configureWithServerUrl(const std::optional<std::string>& serverUrl) {
  if (!isForkedChild()) core_->configureServerUrl(serverUrl);
}

void QuorvanceManager::configureWithUserId(const std::optional<std::string>& userId) {
  if (!isForkedChild()) core_->configureUserId(userId);
}

void QuorvanceManager::configureUserId(const CheckPoint& checkPoint) {
  if (!isForkedChild()) core_->configureUserId(checkPoint);
}

void QuorvanceManager::getSdkConfigurationThread() {
  if (!isForkedChild()) core_->getSdkConfigurationThread();
}

void QuorvanceManager::initializeDeviceId() {
  if (!isForkedChild()) core_->initializeDeviceId();
}

void QuorvanceManager::getDeviceIdThread() {
  if (!isForkedChild()) core_->getDeviceIdThread();
}

std::optional<std::string> QuorvanceManager::getDeviceId() const {
  return isForkedChild() ? std::nullopt : core_->getDeviceId();
}

std::optional<std::string> QuorvanceManager::getSessionId() const {
  return isForkedChild() ? std::nullopt : core_->getSessionId();
}

void QuorvanceManager::sendDataWithNewSession() {
  if (!isForkedChild()) core_->sendDataWithNewSession();
}

void QuorvanceManager::sendDataWithNewSessionThread() {
  if (!isForkedChild()) core_->sendDataWithNewSessionThread();
}

void QuorvanceManager::sendingTracingData() {
  if (!isForkedChild()) core_->sendingTracingData();
}

void QuorvanceManager::logout() {
  if (!isForkedChild()) core_->logout();
}

void QuorvanceManager::getRiskForCheckPoint(const CheckPoint& checkPoint,
                                            RiskCompletion completion) {
  if (!isForkedChild()) core_->getRiskForCheckPoint(checkPoint, std::move(completion));
}

void QuorvanceManager::arriveToCheckPoint(const CheckPoint& checkPoint) {
  if (!isForkedChild()) core_->arriveToCheckPoint(checkPoint);
}

void QuorvanceManager::updateCheckPointStatus(CheckPointType type, const std::string& requestID,
                                              CheckPointStatus status,
                                              const std::optional<std::string>& transactionID) {
  if (!isForkedChild()) core_->updateCheckPointStatus(type, requestID, status, transactionID);
}

std::shared_ptr<QuorvanceScreenListener> QuorvanceManager::startNewScreenListener(
    ScreenListenerType type, std::int64_t actionId, std::shared_ptr<View> view) {
  if (isForkedChild()) return InertScreenListenerMaker().makeListener(type, actionId, view);
  return core_->startNewScreenListener(type, actionId, std::move(view));
}

void QuorvanceManager::checkSensorForEmulator() {
  if (!isForkedChild()) core_->checkSensorForEmulator();
}

void QuorvanceManager::onRequestAccessWithTypeMobilePermission(MobilePermission type) {
  if (!isForkedChild()) core_->onRequestAccess(type);
}

bool QuorvanceManager::ifAuthorizedWithTypeMobilePermission(MobilePermission type) const {
  return !isForkedChild() && core_->ifAuthorized(type);
}

void QuorvanceManager::crashEyeDidCatchCrash(const CrashModel& crash) {
  if (!isForkedChild()) core_->crashEyeDidCatchCrash(crash);
}

}  // namespace quorvance
