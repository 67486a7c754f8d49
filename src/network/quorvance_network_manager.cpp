#include "network/quorvance_network_manager.h"

#include <utility>

#include "base/text.h"
#include "base/uuid.h"

namespace quorvance {

QuorvanceNetworkManager::QuorvanceNetworkManager(std::shared_ptr<InnerQuorvanceData> state,
                                                 std::shared_ptr<NetworkCallMaker> callMaker)
    : state_(std::move(state)), callMaker_(std::move(callMaker)) {}

// Returns the URL that the client now has.
std::string QuorvanceNetworkManager::takeIdentity(const ClientIdentity& identity) {
  const std::lock_guard lock(mutex_);
  deviceId_ = identity.deviceId;
  userId_ = identity.userId;
  if (identity.serverUrl) serverURL_ = *identity.serverUrl;
  return serverURL_;
}

PreparedCall QuorvanceNetworkManager::prepare(const ClientIdentity& identity, Service service,
                                              std::optional<CheckPointType> checkPoint,
                                              std::optional<std::string> requestId) {
  PreparedCall call;
  call.service = service;
  call.url = takeIdentity(identity) + std::string(rowOf(service).path);
  call.requestId = requestId ? std::move(*requestId) : randomUuid();
  // The stored identifier is raw; only this copy is encoded.
  call.keys.userId = percentEncodeForQuery(identity.userId);
  call.keys.deviceId = identity.deviceId;
  call.keys.requestId = call.requestId;
  call.keys.appUUID = state_->vendorIdentifier();
  if (const std::string version = SystemTexts::sdkVersion(); !version.empty()) {
    call.keys.version = version;
  }
  call.keys.checkPoint = checkPoint;
  call.session = state_->currentSession();
  return call;
}

void QuorvanceNetworkManager::send(const PreparedCall& call, Json body,
                                   std::shared_ptr<CallCompletion> completion) {
  // Room for "keys", "session" and "version": an object that grows copies what it holds.
  auto& members = body.get_ref<Json::object_t&>();
  members.reserve(members.size() + 3);
  setMember(body, "keys", call.keys.getJson());
  setMember(body, "session", call.session.getJson());
  callMaker_->requestFromServer(call.url, std::move(body), call.requestId,
                                rowOf(call.service).reportErrors, std::move(completion));
}

void QuorvanceNetworkManager::sendImage(const ClientIdentity& identity, Json body,
                                        std::shared_ptr<CallCompletion> completion) {
  const ServiceRow& row = rowOf(Service::sendBiometricImage);
  callMaker_->requestFromServer(takeIdentity(identity) + std::string(row.path), std::move(body),
                                state_->vendorIdentifier().value_or(std::string()),
                                row.reportErrors, std::move(completion));
}

}  // namespace quorvance
