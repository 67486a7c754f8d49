#include "device/device_data_collector.h"

#include <algorithm>
#include <utility>

#include "base/debug.h"
#include "base/json_exchange.h"
#include "state/system_texts.h"

namespace quorvance {
namespace {

std::optional<MobilePermission> permissionNamed(std::string_view word) {
  const auto words = MobilePermissionEnumerator::dictionary();
  const auto found = words.find(std::string(word));
  if (found == words.end()) return std::nullopt;
  return MobilePermissionEnumerator::fromRawValue(found->second);
}

bool contains(const std::vector<MobilePermission>& list, MobilePermission permission) {
  return std::find(list.begin(), list.end(), permission) != list.end();
}

}  // namespace

std::vector<MobilePermission> readPermissionList(std::string_view stored) {
  std::vector<MobilePermission> permissions;
  while (!stored.empty()) {
    const std::size_t comma = std::min(stored.find(','), stored.size());
    const auto permission = permissionNamed(stored.substr(0, comma));
    if (permission && !contains(permissions, *permission)) permissions.push_back(*permission);
    stored.remove_prefix(std::min(comma + 1, stored.size()));
  }
  return permissions;
}

std::string writePermissionList(const std::vector<MobilePermission>& permissions) {
  std::string stored;
  for (const MobilePermission permission : permissions) {
    if (!stored.empty()) stored += ',';
    stored += MobilePermissionToString::toString(permission);
  }
  return stored;
}

bool canBeUserData(const Json& userData) {
  constexpr std::size_t kBodiesAround = 1;
  return userData.is_object() && canBeWritten(userData, kBodiesAround);
}

DeviceDataCollector::DeviceDataCollector(const Platform& platform,
                                         std::shared_ptr<InnerQuorvanceData> state)
    : state_(std::move(state)),
      identity_(platform.identity),
      environment_(platform.environment),
      userData_(platform.userData),
      authorization_(platform.authorization),
      location_(platform.location) {}

SnapshotInputs DeviceDataCollector::inputs(const DeviceFacts& facts) const {
  SnapshotInputs result{.facts = facts,
                        .vendorIdentifier = state_->vendorIdentifier(),
                        .advertisingIdentifier = std::nullopt,
                        .now = state_->now(),
                        .isInDebugMode = isInDebugMode()};
  if (identity_) result.advertisingIdentifier = identity_->advertisingIdentifier();
  result.isEmulator = environment_ && environment_->variable(kSimulatorModelVariable).has_value();
  return result;
}

Json DeviceDataCollector::configurationBody(const SystemFacts& system) const {
  return DeviceData{
      .iosVersion = system.systemVersion, .model = system.model, .kindModel = system.kindModel}
      .getJson();
}

Json DeviceDataCollector::deviceIdBody() const {
  DeviceData data{.collectTime = state_->now(), .uuid = state_->vendorIdentifier()};
  if (identity_) data.idfa = identity_->advertisingIdentifier();
  // Room for "keys", "session" and "version".
  Json body = makeObject(4);
  JsonDiscarder discarder(body);
  putMember(body, "device_data", data.getJson());
  discarder.keep();
  return body;
}

Json DeviceDataCollector::deviceDataJson(const DeviceFacts& facts) const {
  Json json = buildDeviceData(inputs(facts)).getJson();
  if (isInDebugMode()) debugPrint("device_data:  " + textOf(json));
  return json;
}

Json DeviceDataCollector::settingDataJson(const DeviceFacts& facts) const {
  return buildSettingData(inputs(facts)).getJson();
}

Json DeviceDataCollector::simDataJson(const DeviceFacts& facts) const {
  return buildSimData(inputs(facts)).getJson();
}

Json DeviceDataCollector::collectUserData() const {
  if (!userData_) return Json::object();
  Json collected = writtenJson<Json>([this](JsonSink& sink) { userData_->writeUserData(sink); });
  if (canBeUserData(collected)) return collected;
  discardJson(collected);
  debugPrint("the collected user data cannot be sent");
  return Json::object();
}

PermissionSnapshot DeviceDataCollector::permissions() const {
  return authorization_ ? PermissionSnapshot::take(*authorization_) : PermissionSnapshot{};
}

bool DeviceDataCollector::isAuthorized(MobilePermission permission) const {
  return authorization_ && quorvance::isAuthorized(*authorization_, permission);
}

std::optional<LocationFix> DeviceDataCollector::location(
    const PermissionSnapshot& permissions) const {
  return location_ && permissions.mayLocate() ? location_->lastFix() : std::nullopt;
}

void DeviceDataCollector::setPendingUserData(Json userData) {
  const std::lock_guard lock(mutex_);
  pendingUserData_ = std::move(userData);
}

std::optional<Json> DeviceDataCollector::takePendingUserData() {
  const std::lock_guard lock(mutex_);
  return std::exchange(pendingUserData_, std::nullopt);
}

void DeviceDataCollector::forget() {
  std::optional<Json> dropped;
  const JsonDiscarder discarder(dropped);
  const std::lock_guard lock(mutex_);
  dropped.swap(pendingUserData_);
  askPermissions_.reset();
  state_->forget();
}

void DeviceDataCollector::setSensorCheck(SensorCheck check) {
  const std::lock_guard lock(mutex_);
  sensorCheck_ = check;
}

SensorCheck DeviceDataCollector::sensorCheck() const {
  const std::lock_guard lock(mutex_);
  return sensorCheck_;
}

std::vector<MobilePermission>& DeviceDataCollector::askedLocked() {
  if (!askPermissions_) {
    const auto stored = state_->readText(StoredKey::permissionList);
    askPermissions_ = readPermissionList(stored.value_or(std::string()));
  }
  return *askPermissions_;
}

std::vector<MobilePermission> DeviceDataCollector::askPermissions() {
  const std::lock_guard lock(mutex_);
  return askedLocked();
}

void DeviceDataCollector::recordAsked(MobilePermission permission) {
  // Also around the store, which waits for nothing: lists are stored in the order of the asking.
  const std::lock_guard lock(mutex_);
  auto& asked = askedLocked();
  if (!contains(asked, permission)) asked.push_back(permission);
  state_->write(StoredKey::permissionList, writePermissionList(asked));
}

}  // namespace quorvance
