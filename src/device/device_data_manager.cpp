#include "device/device_data_manager.h"

#include <utility>

#include "base/collection.h"
#include "base/fatal.h"
#include "device/check_point_additional_data.h"
#include "state/class_flags.h"

namespace quorvance {
namespace {

// Six of its own, and room for the checkpoint, "keys" and "version": an object that grows copies
// what it holds.
constexpr std::size_t kPayloadMembers = 9;

}  // namespace

DeviceDataManager::DeviceDataManager(const Platform& platform,
                                     std::shared_ptr<InnerQuorvanceData> state,
                                     std::shared_ptr<SystemTexts> texts,
                                     std::shared_ptr<SystemFactsReader> system)
    : state_(std::move(state)),
      facts_(std::make_shared<DeviceFactsCache>(platform, std::move(texts), std::move(system))),
      backgroundQueue_(platform.backgroundQueue),
      authorization_(platform.authorization),
      collector_(platform, state_) {}

// A source over a bus begins to read with the first question: the first checkpoint may follow.
void DeviceDataManager::refresh() {
  if (authorization_ && isCollectionEnabled()) {
    backgroundQueue_->post(WorkLane::facts, [source = authorization_] {
      static_cast<void>(PermissionSnapshot::take(*source));
    });
  }
  facts_->refresh();
}

void DeviceDataManager::whenConfigurationBodyIsReady(Task task) {
  facts_->whenSystemKnown(std::move(task));
}

void DeviceDataManager::whenSessionIsReady(Task task) { facts_->whenRefreshed(std::move(task)); }

Json DeviceDataManager::configurationBody() const {
  return collector_.configurationBody(facts_->snapshot()->system);
}

Json DeviceDataManager::deviceIdBody() const { return collector_.deviceIdBody(); }

Json DeviceDataManager::getJson(CheckPointType type, std::optional<bool> collectAll) {
  // Before the flag is read, and nothing pending is dropped.
  if (type == CheckPointType::UPDATE_DETAILS) return makeObject(kPayloadMembers);
  if (!collectAll) fatalError("a payload was asked for without saying whether to collect all");
  Json payload = *collectAll ? sessionPayload() : commonPayload();
  JsonDiscarder discarder(payload);
  // Last, since want of memory above must not lose it. Room for it is there.
  std::optional<Json> pending = collector_.takePendingUserData();
  const JsonDiscarder pendingDiscarder(pending);
  if (!*collectAll && pending) putMember(payload, "user_data", std::move(*pending));
  setSessionDataCollect(false);
  discarder.keep();
  return payload;
}

void DeviceDataManager::beginSession() {
  std::optional<Json> pending = collector_.takePendingUserData();
  const JsonDiscarder discarder(pending);
  setSessionDataCollect(false);
}

Json DeviceDataManager::sessionPayload() {
  Json payload = commonPayload();
  JsonDiscarder discarder(payload);
  const std::shared_ptr<const DeviceFacts> facts = facts_->snapshot();
  putMember(payload, "device_data", collector_.deviceDataJson(*facts));
  putMember(payload, "sim_data", collector_.simDataJson(*facts));
  putMember(payload, "user_data", collector_.collectUserData());
  putMember(payload, "settings_data", collector_.settingDataJson(*facts));
  discarder.keep();
  return payload;
}

Json DeviceDataManager::commonPayload() {
  Json payload = makeObject(kPayloadMembers);
  JsonDiscarder discarder(payload);
  state_->currentSession().putInto(payload);
  putMember(payload, "checkpoint_additional_data", buildAdditionalData());
  discarder.keep();
  return payload;
}

Json DeviceDataManager::buildAdditionalData() {
  const PermissionSnapshot permissions = collector_.permissions();
  PermissionStatus status = permissionStatus(permissions);
  CheckPointAdditionalData data;
  data.permissions = std::move(status.authorized);
  data.ignorePermissions = std::move(status.denied);
  data.askPermissions = collector_.askPermissions();
  data.collectTime = state_->now();
  data.location = collector_.location(permissions);
  return data.getJson();
}

void DeviceDataManager::setPendingUserData(Json userData) {
  if (userData.is_null()) {
    collector_.takePendingUserData();
  } else if (canBeUserData(userData)) {
    collector_.setPendingUserData(std::move(userData));
  }
}

bool DeviceDataManager::isAuthorized(MobilePermission permission) const {
  return collector_.isAuthorized(permission);
}

void DeviceDataManager::recordAsked(MobilePermission permission) {
  collector_.recordAsked(permission);
}

void DeviceDataManager::setSensorCheck(SensorCheck check) { collector_.setSensorCheck(check); }

SensorCheck DeviceDataManager::sensorCheck() const { return collector_.sensorCheck(); }

}  // namespace quorvance
