#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/json.h"
#include "device/device_facts_cache.h"
#include "device/permission_snapshot.h"
#include "device/snapshot_builders.h"
#include "quorvance/mobile_permission.h"
#include "quorvance/platform/platform.h"
#include "state/inner_quorvance_data.h"

namespace quorvance {

/// The stored form of the asked-for permissions: wire words in the order of asking, joined by ",".
/// Unknown words and repetitions are skipped when it is read.
std::vector<MobilePermission> readPermissionList(std::string_view stored);
std::string writePermissionList(const std::vector<MobilePermission>& permissions);

/// Whether a body may have this as its "user_data": an object that can be written inside of it.
bool canBeUserData(const Json& userData);

/// What the motion sensors say at an emulator check: an emulator's do not move. No record carries
/// it.
struct SensorCheck {
  /// A check is running.
  bool isListening = false;
  /// Whether a row came; absent until a check has ended.
  std::optional<bool> hasSensorsData;
};

/// The running values that payloads are built from: the sources of what is told as of now, the
/// permissions that the host asked for, and at most one pending user-data record. Any thread,
/// guarded by one mutex.
class DeviceDataCollector {
 public:
  DeviceDataCollector(const Platform& platform, std::shared_ptr<InnerQuorvanceData> state);

  // Each is built now, and stamped so, from these facts.
  Json configurationBody(const SystemFacts& system) const;
  Json deviceIdBody() const;
  Json deviceDataJson(const DeviceFacts& facts) const;
  Json settingDataJson(const DeviceFacts& facts) const;
  Json simDataJson(const DeviceFacts& facts) const;
  /// {} without a source, and for what is no object or cannot be written: it would keep the other
  /// records from being sent. Waits for the platform: fact lane or background only.
  Json collectUserData() const;

  /// The user's answers of now.
  PermissionSnapshot permissions() const;
  /// Asks for this kind alone.
  bool isAuthorized(MobilePermission permission) const;
  /// The last known position of now; asked for only where the permissions allow it.
  std::optional<LocationFix> location(const PermissionSnapshot& permissions) const;

  /// Kept until the next payload takes it.
  void setPendingUserData(Json userData);
  std::optional<Json> takePendingUserData();

  /// Read from the stored list at first use, so it is always set.
  std::vector<MobilePermission> askPermissions();
  /// Adds the kind to the list and stores it; each kind once.
  void recordAsked(MobilePermission permission);

  /// Forgets what the host has asked and given, and the state with it: in one step, since the list
  /// is read from there and written there.
  void forget();

  void setSensorCheck(SensorCheck check);
  SensorCheck sensorCheck() const;

 private:
  SnapshotInputs inputs(const DeviceFacts& facts) const;
  std::vector<MobilePermission>& askedLocked();

  const std::shared_ptr<InnerQuorvanceData> state_;
  const std::shared_ptr<IdentitySource> identity_;
  const std::shared_ptr<EnvironmentSource> environment_;
  const std::shared_ptr<UserDataSourceBase> userData_;
  const std::shared_ptr<AuthorizationSource> authorization_;
  const std::shared_ptr<LocationSource> location_;

  mutable std::mutex mutex_;
  SensorCheck sensorCheck_;
  std::optional<Json> pendingUserData_;
  std::optional<std::vector<MobilePermission>> askPermissions_;
};

}  // namespace quorvance
