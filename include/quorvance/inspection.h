#pragma once

// What the library tells of this device, field by field, for people who review what an application
// collects.

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "quorvance/platform/platform.h"

#pragma GCC visibility push(default)

namespace quorvance {

struct InspectedField {
  /// "device_data", "settings_data", "sim_data" as in a session's payload, or "permissions".
  std::string record{};
  std::string key{};
  /// JSON text; absent when nothing is known.
  std::optional<std::string> value{};
  /// A session or checkpoint of this moment would carry it; a permission: it decides which list of
  /// permissions names it.
  bool isSent = false;
  /// Where it comes from; of several sources the first that tells.
  std::string source{};
  /// What reading took, together with the fields that are read with it; absent when the mode in
  /// force forbids the reading.
  std::optional<std::chrono::microseconds> cost{};
  /// When it is sent, or the mode that it is sent in.
  std::string governedBy{};
};

using InspectionCompletion = std::function<void(std::vector<InspectedField> fields)>;

/// Reads everything that a session tells, in the mode in force (QuorvanceManager::isInDebugMode),
/// and hands it over on a background thread. Sends nothing and stores nothing but a random
/// identifier where the machine has none. Returns at once; buses that hang are waited for in the
/// background, a second or two. The completion is called once, with nothing when memory ran out
/// meanwhile, and inside this call when it was out already. In a forked child nothing is done.
/// Throws nothing. The platform's required members must be there.
void inspectDevice(const Platform& platform, InspectionCompletion completion);

}  // namespace quorvance

#pragma GCC visibility pop
