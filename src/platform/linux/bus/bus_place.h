#pragma once

#include <chrono>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "platform/linux/bus/sd_bus.h"
#include "platform/linux/facts/root_files.h"
#include "quorvance/platform/environment.h"

namespace quorvance {

/// How long a service, or a bus, may take to answer.
inline constexpr std::chrono::milliseconds kBusTimeout{500};
/// How long a bus that went away, or did not answer, is left alone.
inline constexpr std::chrono::milliseconds kBusPause{60'000};

/// Where a bus is and how it is spoken to.
struct BusPlace {
  /// As D-Bus writes addresses; empty when there is no bus.
  std::string address;
  std::span<const char* const> libraryNames = kSdBusNames;
  std::chrono::milliseconds timeout = kBusTimeout;
  std::chrono::milliseconds pause = kBusPause;
};

/// The library that speaks to it; null when there is none, and when nobody can be spoken to: its
/// address is empty, or its sockets are not there. On machines without buses it would take half a
/// megabyte for nothing. Waits for the disk, so never in a host call.
std::shared_ptr<const SdBus> openSdBusFor(const BusPlace& place);

/// The bus of the machine: DBUS_SYSTEM_BUS_ADDRESS, else the usual socket under the root.
BusPlace systemBusOf(EnvironmentSource& environment, const RootFiles& files);
/// The bus of the user's session: DBUS_SESSION_BUS_ADDRESS, else the socket in XDG_RUNTIME_DIR.
BusPlace sessionBusOf(EnvironmentSource& environment);

/// Of a list of addresses those of sockets of this machine: others would reach out to a network or
/// start a process.
std::string unixAddressesIn(std::string_view addresses);

}  // namespace quorvance
