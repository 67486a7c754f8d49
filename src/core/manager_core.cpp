#include "core/manager_core.h"

#include <utility>

#include "base/debug.h"

namespace quorvance {

std::shared_ptr<ManagerCore> ManagerCore::make(std::shared_ptr<Context> context) {
  return std::shared_ptr<ManagerCore>(new ManagerCore(std::move(context)));
}

ManagerCore::ManagerCore(std::shared_ptr<Context> context)
    : context_(std::move(context)),
      networkManager_(std::make_shared<QuorvanceNetworkManager>(
          context_->state, std::make_shared<NetworkCallMaker>(context_->callServices()))),
      startAppTime_(context_->state->now()),
      deviceId_(context_->state->readText(StoredKey::deviceId).value_or(std::string(kNoDeviceId))) {
}

std::optional<std::string> ManagerCore::serverUrl() const {
  const std::lock_guard lock(mutex_);
  return serverUrl_;
}

void ManagerCore::setServerUrl(std::optional<std::string> serverUrl) {
  const std::lock_guard lock(mutex_);
  serverUrl_ = std::move(serverUrl);
}

std::optional<std::string> ManagerCore::userId() const {
  const std::lock_guard lock(mutex_);
  return userId_;
}

void ManagerCore::setUserId(std::optional<std::string> userId) {
  const std::lock_guard lock(mutex_);
  userId_ = std::move(userId);
}

std::optional<std::string> ManagerCore::getDeviceId() const {
  return context_->state->readText(StoredKey::deviceId);
}

std::optional<std::string> ManagerCore::getSessionId() const {
  return context_->state->readText(StoredKey::sessionId);
}

ClientIdentity ManagerCore::identity() const {
  ClientIdentity identity;
  std::optional<std::string> user;
  {
    const std::lock_guard lock(mutex_);
    identity.deviceId = deviceId_;
    identity.serverUrl = serverUrl_;
    user = userId_;
  }
  InnerQuorvanceData& state = *context_->state;
  if (identity.deviceId == kNoDeviceId) {
    identity.deviceId = state.readText(StoredKey::deviceId).value_or(identity.deviceId);
  }
  if (!user) user = state.readText(StoredKey::userId);
  identity.userId = user.value_or(std::string(kUnknownUser));
  return identity;
}

PreparedCall ManagerCore::prepare(Service service, std::optional<CheckPointType> checkPoint,
                                  std::optional<std::string> requestId) {
  return networkManager_->prepare(identity(), service, checkPoint, std::move(requestId));
}

void ManagerCore::uploadStoredReports(ReportCategory category) {
  context_->uploader->uploadStoredReports(category, networkManager_, prepare(serviceOf(category)));
}

std::string responseText(const ResponceObject& response) {
  return response.output ? textOf(*response.output) : "nil";
}

void printResponse(const ResponceObject& response) {
  if (isInDebugMode()) debugPrint("QuorvanceManager response: " + responseText(response));
}

}  // namespace quorvance
