#pragma once

// Which network the device is on, as the kernel's routes and interfaces tell.

#include <string>

#include "platform/linux/facts/root_files.h"
#include "quorvance/platform/reachability.h"

namespace quorvance {

/// Where traffic leaves the device now.
struct DefaultRoute {
  NetworkKind kind = NetworkKind::unknown;
  /// Empty without a route.
  std::string interface;

  bool operator==(const DefaultRoute&) const = default;
};

/// The default route of the lowest metric whose interface has a carrier, of IPv4 before IPv6: while
/// the other end of a cable is down, the route stays and only the carrier tells. A few small reads
/// from the kernel's memory; any thread.
DefaultRoute readDefaultRoute(const RootFiles& files);

}  // namespace quorvance
