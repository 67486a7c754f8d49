#pragma once

// The JSON value of the interface, declared only: a host that builds or reads values includes
// <nlohmann/json.hpp> itself, a host that only passes them on pays nothing.

#include "quorvance/standard_library.h"

#include <nlohmann/json_fwd.hpp>

namespace quorvance {

/// Objects keep the order in which their members were inserted.
using Json = nlohmann::ordered_json;

static_assert(NLOHMANN_JSON_VERSION_MAJOR == 3 && NLOHMANN_JSON_VERSION_MINOR >= 11,
              "the JSON library must be 3.11 or later, and the same for the library and its host");

}  // namespace quorvance
