#pragma once

// The JSON value of the interface, declared only: a host that builds or reads values includes
// <nlohmann/json.hpp> itself, a host that only passes them on pays nothing.

#include <nlohmann/json_fwd.hpp>

namespace quorvance {

/// Objects keep the order in which their members were inserted.
using Json = nlohmann::ordered_json;

static_assert(NLOHMANN_JSON_VERSION_MAJOR == 3 && NLOHMANN_JSON_VERSION_MINOR >= 11,
              "the library and its host must be built with one major version of the JSON library");

}  // namespace quorvance
