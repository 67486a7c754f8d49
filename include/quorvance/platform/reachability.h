#pragma once

#include "quorvance/standard_library.h"

#include <functional>
#include <memory>

#pragma GCC visibility push(default)

namespace quorvance {

/// What carries the traffic of the device.
enum class NetworkKind {
  /// Nothing: no default route, or none whose interface has a carrier.
  none,
  wlan,
  wwan,
  /// A cable, a tunnel, a phone on a cable.
  other,
  /// Not read yet, or not to be read here.
  unknown,
};

/// Told on a thread of the library, one change at a time; must not block and throws nothing.
using NetworkListener = std::function<void(NetworkKind)>;

/// The kind of network that the device is on. It decides no call and repeats none: what cannot be
/// sent fails as always. Any thread; throws nothing. In a forked child nothing is watched.
class ReachabilityMonitor {
 public:
  virtual ~ReachabilityMonitor() = default;
  /// From memory; unknown until somebody has subscribed and the first reading has ended.
  virtual NetworkKind kind() = 0;
  /// Calls the listener after each change, the first reading included, also when another network
  /// of the same kind takes over. It is called until the returned object goes; a call that has
  /// begun may end later. The first subscription starts the watching, in the background.
  [[nodiscard]] virtual std::shared_ptr<void> subscribe(NetworkListener listener) = 0;
};

}  // namespace quorvance

#pragma GCC visibility pop
