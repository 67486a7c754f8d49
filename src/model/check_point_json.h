#pragma once

#include <cstddef>
#include <string_view>

#include "base/json.h"
#include "quorvance/check_point_base.h"

namespace quorvance {

/// The keys that every checkpoint shares.
inline constexpr std::string_view kCheckPointTypeKey = "checkpoint_type";
inline constexpr std::string_view kAdditionalDataKey = "additionalData";
inline constexpr std::string_view kUserKey = "user";

/// An object with room for `members`, opened with "checkpoint_type".
Json openCheckPoint(const CheckPointContent& content, std::size_t members);

/// Adds "additionalData" when the checkpoint has some.
void putAdditionalData(Json& object, const CheckPointContent& content);

}  // namespace quorvance
