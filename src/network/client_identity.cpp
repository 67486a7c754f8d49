#include "network/client_identity.h"

#include <utility>

#include "base/fatal.h"
#include "base/out_of_memory.h"

namespace quorvance {

ClientIdentity::ClientIdentity(std::shared_ptr<InnerQuorvanceData> state)
    : state_(std::move(state)),
      deviceId_(state_->readText(StoredKey::deviceId).value_or(std::string(kNoDeviceId))),
      erasures_(state_->erasures()) {}

void ClientIdentity::dropErasedLocked() {
  const std::uint64_t erasures = state_->erasures();
  if (std::exchange(erasures_, erasures) == erasures) return;
  userId_.reset();
  deviceId_ = kNoDeviceId;
}

std::optional<std::string> ClientIdentity::serverUrl() const {
  const std::lock_guard lock(mutex_);
  return serverUrl_;
}

void ClientIdentity::setServerUrl(std::optional<std::string> serverUrl) {
  const std::lock_guard lock(mutex_);
  serverUrl_ = std::move(serverUrl);
}

std::optional<std::string> ClientIdentity::userId() const {
  const std::lock_guard lock(mutex_);
  return erasures_ == state_->erasures() ? userId_ : std::nullopt;
}

void ClientIdentity::setUserId(std::optional<std::string> userId) {
  const std::lock_guard lock(mutex_);
  dropErasedLocked();
  userId_ = std::move(userId);
}

void ClientIdentity::configureServerUrl(const std::optional<std::string>& serverUrl) {
  setServerUrl(serverUrl);
  if (serverUrl) state_->write(StoredKey::serverUrl, *serverUrl);
}

void ClientIdentity::configureUserId(const std::string& userId) {
  std::optional<std::string> copy = userId;  // from here on only the store may want memory
  state_->write(StoredKey::userId, userId);
  setUserId(std::move(copy));
}

void ClientIdentity::configureDeviceId(const std::string& deviceId) {
  {
    const std::lock_guard lock(mutex_);
    dropErasedLocked();
    deviceId_ = deviceId;
  }
  state_->write(StoredKey::deviceId, deviceId);
}

void ClientIdentity::forgetUser() {
  // Without memory for the store the field is cleared all the same.
  const bool isStored = hasMemoryFor(
      [&] { state_->write(StoredKey::userId, state_->defaultValue(StoredKey::userId)); });
  setUserId(std::nullopt);
  if (!isStored) return;
  if (!state_->readText(StoredKey::userId)) fatalError("the stored user cannot be read");
}

ClientIdentity::Values ClientIdentity::current() {
  Values values;
  std::optional<std::string> user;
  {
    const std::lock_guard lock(mutex_);
    dropErasedLocked();
    if (serverUrl_) lastServerUrl_ = *serverUrl_;
    values.serverUrl = lastServerUrl_;
    values.deviceId = deviceId_;
    user = userId_;
  }
  if (values.deviceId == kNoDeviceId) {
    values.deviceId = state_->readText(StoredKey::deviceId).value_or(values.deviceId);
  }
  if (!user) user = state_->readText(StoredKey::userId);
  values.userId = user.value_or(std::string(kUnknownUser));
  return values;
}

}  // namespace quorvance
