#pragma once

#include <optional>
#include <string>

#include "base/json.h"
#include "quorvance/check_point_type.h"

namespace quorvance {

/// The identity of one request, sent under "keys". Absent fields are left out.
struct KeysData {
  std::optional<std::string> userId{};
  std::optional<std::string> deviceId{};
  std::optional<std::string> requestId{};
  std::optional<std::string> appUUID{};
  std::optional<std::string> version{};
  std::optional<CheckPointType> checkPoint{};

  Json getJson() const;
};

}  // namespace quorvance
