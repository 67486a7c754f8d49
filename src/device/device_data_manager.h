#pragma once

#include <memory>
#include <optional>

#include "base/json.h"
#include "device/device_data_collector.h"
#include "device/device_facts_cache.h"
#include "quorvance/check_point_type.h"
#include "state/inner_quorvance_data.h"
#include "state/system_texts.h"

namespace quorvance {

/// The one door to what is told of the device: the device part of every body, and the permissions.
/// Any thread. Nothing here waits, but for a session's payload.
class DeviceDataManager {
 public:
  DeviceDataManager(const Platform& platform, std::shared_ptr<InnerQuorvanceData> state,
                    std::shared_ptr<SystemTexts> texts, std::shared_ptr<SystemFactsReader> system);

  /// Has everything read that payloads tell, waiting for nothing. From the first time on, a change
  /// of the network has its facts read again.
  void refresh();
  // Runs the task on the background queue, once: when what the body tells has been read, or two
  // seconds later at most.
  void whenConfigurationBodyIsReady(Task task);
  void whenSessionIsReady(Task task);

  /// The body of the configuration request: the model facts at the top level, in every mode.
  Json configurationBody() const;
  /// The body of the device-identifier request, under "device_data".
  Json deviceIdBody() const;
  /// The whole set for a session (`collectAll` true; then background only, since user data is
  /// collected), the session and the permissions for a checkpoint (false). The facts are those of
  /// one moment. Clears what waits to be sent. UPDATE_DETAILS carries and clears nothing at all,
  /// and that is decided first; an absent `collectAll` is a programming error otherwise.
  Json getJson(CheckPointType type, std::optional<bool> collectAll);
  // The same in two steps, for a session whose payload is made later than it was asked for: data
  // that the host gave before goes with none, what it gives in between with the next checkpoint.
  /// Clears what waits to be sent.
  void beginSession();
  /// The whole set; clears nothing. Background only.
  Json sessionPayload();
  /// The permissions and the position of now, and what was asked for.
  Json buildAdditionalData();

  /// Goes with the next payload, and with no other. Null drops what waits; what is no object or
  /// cannot be written changes nothing.
  void setPendingUserData(Json userData);
  /// Whether the kind is granted now; asks for that kind alone.
  bool isAuthorized(MobilePermission permission) const;
  /// Notes that the host asked the user for this kind.
  void recordAsked(MobilePermission permission);
  /// What the host has asked and given is forgotten, and the state with it.
  void forget() { collector_.forget(); }
  void setSensorCheck(SensorCheck check);
  SensorCheck sensorCheck() const;

 private:
  Json commonPayload();

  const std::shared_ptr<InnerQuorvanceData> state_;
  const std::shared_ptr<DeviceFactsCache> facts_;
  const std::shared_ptr<BackgroundQueue> backgroundQueue_;
  const std::shared_ptr<AuthorizationSource> authorization_;
  DeviceDataCollector collector_;
};

}  // namespace quorvance
