// From the JSON of a journey to the checkpoint that a host would build.
#pragma once

#include <memory>

#include "apps/demo_host/journey_json.h"
#include "quorvance/check_point.h"

namespace demo_host {

// Throws PlacedError, also for what the library would silently drop or change: an unknown key, a
// value of another type, a word that reads as a fallback.
std::unique_ptr<quorvance::CheckPoint> buildCheckPoint(const Json& json, const Pointer& place);

}  // namespace demo_host
