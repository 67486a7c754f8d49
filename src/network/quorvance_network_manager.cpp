#include "network/quorvance_network_manager.h"

#include <utility>

#include "base/text.h"
#include "base/uuid.h"

namespace quorvance {

QuorvanceNetworkManager::QuorvanceNetworkManager(std::shared_ptr<InnerQuorvanceData> state,
                                                 std::shared_ptr<NetworkCallMaker> callMaker)
    : state_(std::move(state)), callMaker_(std::move(callMaker)), identity_(state_) {}

Caller QuorvanceNetworkManager::callerOfNow() {
  return {identity_.current(), state_->currentSession()};
}

PreparedCall QuorvanceNetworkManager::prepare(Service service,
                                              std::optional<CheckPointType> checkPoint,
                                              std::optional<std::string> requestId) {
  return prepare(callerOfNow(), service, checkPoint, std::move(requestId));
}

PreparedCall QuorvanceNetworkManager::prepareFor(Caller caller, Service service) const {
  return prepare(std::move(caller), service, std::nullopt, std::nullopt);
}

CallDraft QuorvanceNetworkManager::draft(Service service) {
  CallDraft draft{callOf({identity_.current(), Session()}, service, std::nullopt, std::nullopt),
                  state_->markSession()};
  draft.call.pending = callMaker_->beginPending();
  return draft;
}

PreparedCall QuorvanceNetworkManager::prepare(CallDraft draft) const {
  draft.call.keys.appUUID = state_->vendorIdentifier();
  draft.call.session = state_->sessionOf(draft.session);
  return std::move(draft.call);
}

PreparedCall QuorvanceNetworkManager::prepare(Caller caller, Service service,
                                              std::optional<CheckPointType> checkPoint,
                                              std::optional<std::string> requestId) const {
  PreparedCall call = callOf(std::move(caller), service, checkPoint, std::move(requestId));
  call.keys.appUUID = state_->vendorIdentifier();
  call.pending = callMaker_->beginPending();
  return call;
}

PreparedCall QuorvanceNetworkManager::callOf(Caller caller, Service service,
                                             std::optional<CheckPointType> checkPoint,
                                             std::optional<std::string> requestId) {
  PreparedCall call;
  call.service = service;
  call.url = std::move(caller.identity.serverUrl.append(rowOf(service).path));
  call.requestId = requestId ? std::move(*requestId) : randomUuid();
  // The stored identifier is raw; only this copy is encoded.
  call.keys.userId = percentEncodeForQuery(caller.identity.userId);
  call.keys.deviceId = std::move(caller.identity.deviceId);
  call.keys.requestId = call.requestId;
  if (std::string version = SystemTexts::sdkVersion(); !version.empty()) {
    call.keys.version = std::move(version);
  }
  call.keys.checkPoint = checkPoint;
  call.session = std::move(caller.session);
  return call;
}

void QuorvanceNetworkManager::send(const PreparedCall& call, Json body, ReplyHandler handler,
                                   Task alongside) {
  const JsonDiscarder discarder(body);
  constexpr std::size_t kOwnMembers = 3;  // "keys", "session" and "version"
  reserveMembers(body, kOwnMembers);
  setMember(body, "keys", call.keys.getJson());
  call.session.putInto(body);
  callMaker_->requestFromServer(call.url, std::move(body), call.requestId,
                                rowOf(call.service).reportErrors, std::move(handler),
                                std::move(alongside), {nameOf(call.service), call.pending});
}

void QuorvanceNetworkManager::sendImage(Json body, ReplyHandler handler) {
  const JsonDiscarder discarder(body);
  reserveMembers(body, 1);  // "version"
  const ServiceRow& row = rowOf(Service::sendBiometricImage);
  callMaker_->requestFromServer(identity_.current().serverUrl + std::string(row.path),
                                std::move(body), state_->vendorIdentifier().value_or(std::string()),
                                row.reportErrors, std::move(handler), nullptr,
                                {nameOf(row.service), callMaker_->beginPending()});
}

}  // namespace quorvance
