#include "device/device_data_manager.h"

#include <utility>

#include "base/fatal.h"
#include "device/check_point_additional_data.h"
#include "state/class_flags.h"

namespace quorvance {
namespace {

// Six of its own, and room for the checkpoint, "keys" and "version": an object that grows copies
// what it holds.
constexpr std::size_t kPayloadMembers = 9;

}  // namespace

DeviceDataManager::DeviceDataManager(std::shared_ptr<InnerQuorvanceData> state,
                                     std::shared_ptr<DeviceDataCollector> collector)
    : state_(std::move(state)), collector_(std::move(collector)) {}

Json DeviceDataManager::getJson(CheckPointType type, std::optional<bool> collectAll) {
  Json payload = makeObject(kPayloadMembers);
  // Before the flag is read, and nothing pending is dropped.
  if (type == CheckPointType::UPDATE_DETAILS) return payload;
  state_->currentSession().putInto(payload);
  if (!collectAll) fatalError("a payload was asked for without saying whether to collect all");
  putMember(payload, "checkpoint_additional_data", buildAdditionalData());
  std::optional<Json> pending = collector_->takePendingUserData();
  if (*collectAll) {
    putSnapshots(payload);
  } else if (pending) {
    putMember(payload, "user_data", std::move(*pending));
  }
  setSessionDataCollect(false);
  return payload;
}

void DeviceDataManager::putSnapshots(Json& payload) {
  putMember(payload, "device_data", collector_->deviceDataJson());
  putMember(payload, "sim_data", collector_->simDataJson());
  putMember(payload, "user_data", collector_->collectUserData());
  putMember(payload, "settings_data", collector_->settingDataJson());
}

Json DeviceDataManager::buildAdditionalData() {
  const PermissionSnapshot permissions = collector_->permissions();
  PermissionStatus status = permissionStatus(permissions);
  CheckPointAdditionalData data;
  data.permissions = std::move(status.authorized);
  data.ignorePermissions = std::move(status.denied);
  data.askPermissions = collector_->askPermissions();
  data.collectTime = state_->now();
  data.location = collector_->location(permissions);
  return data.getJson();
}

}  // namespace quorvance
