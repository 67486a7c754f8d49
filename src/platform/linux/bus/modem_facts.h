#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/linux/bus/bus_place.h"
#include "quorvance/platform/device_facts.h"

namespace quorvance {

/// The modem and its carrier, as ModemManager tells them: of several modems the one that is
/// furthest on its way to a network. The carrier is the SIM's own; where the SIM tells none, the
/// network that serves. Identifiers of subscriber and equipment are never read. Waits; fact lane
/// only.
NetworkFacts readModem(const BusPlace& systemBus);

/// The name of the radio technology for ModemManager's bits, tested in the order in which they are
/// compared; absent for those that are in no class.
std::optional<std::string> radioTechnologyOf(std::uint32_t accessTechnologies);

}  // namespace quorvance
