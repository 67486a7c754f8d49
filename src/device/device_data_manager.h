#pragma once

#include <memory>
#include <optional>

#include "base/json.h"
#include "device/device_data_collector.h"
#include "quorvance/check_point_type.h"
#include "state/inner_quorvance_data.h"

namespace quorvance {

/// Assembles the device part of a request body. Any thread.
class DeviceDataManager {
 public:
  DeviceDataManager(std::shared_ptr<InnerQuorvanceData> state,
                    std::shared_ptr<DeviceDataCollector> collector);

  /// The whole set for a session (`collectAll` true; then background only, since user data is
  /// collected), the session and the permissions for a checkpoint (false; waits for nothing).
  /// UPDATE_DETAILS carries nothing at all, and that is decided first; an absent `collectAll` is a
  /// programming error otherwise.
  Json getJson(CheckPointType type, std::optional<bool> collectAll);

  /// The permissions and the position of now, and what was asked for.
  Json buildAdditionalData();

 private:
  void putSnapshots(Json& payload);

  const std::shared_ptr<InnerQuorvanceData> state_;
  const std::shared_ptr<DeviceDataCollector> collector_;
};

}  // namespace quorvance
