#pragma once

#include <optional>

#include "platform/linux/bus/bus_place.h"

namespace quorvance {

/// Whether a screen reader is on, as the accessibility bus of the session tells; absent when it
/// does not run. Waits; fact lane only.
std::optional<bool> readScreenReader(const BusPlace& sessionBus);

}  // namespace quorvance
