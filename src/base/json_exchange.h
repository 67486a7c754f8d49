#pragma once

// The library's side of JSON values that pass between it and its host.

#include "base/json.h"
#include "quorvance/json_conversion.h"

namespace quorvance {

using JsonView = JsonReader<Json>;

/// Takes a lent value as far as it may be taken, else a copy.
Json take(const JsonSource& source);

}  // namespace quorvance
