#pragma once

#include <memory>
#include <optional>

#include "platform/linux/bus/bus_place.h"
#include "platform/linux/facts/sandbox.h"
#include "platform/linux/threads/watch_thread.h"
#include "quorvance/platform/authorization.h"

namespace quorvance {

/// What the system's location service has told.
struct LocationService {
  /// The first reading has ended, be it that nobody answered.
  bool isRead = false;
  /// The service runs, and the machine's owner lets it tell places.
  bool isOn = false;
  std::optional<LocationFix> fix{};
};

/// GeoClue, on the system bus: followed in the background from the first question on. It is asked
/// for the place only while somebody wants it. Answers at once, from memory. Any thread; guarded by
/// the state's mutex.
class GeoClue {
 public:
  /// `mayStart`: whether a question may start the service.
  GeoClue(BusPlace systemBus, FindSandbox findSandbox, bool mayStart,
          std::shared_ptr<WatchThread> thread);
  ~GeoClue();

  LocationService service();
  /// Has the place followed from now on, or no longer. Without the user's permission it must not be
  /// wanted. A fix that is no longer wanted is forgotten.
  void want(bool isWanted);

 private:
  struct State;
  class ServiceWatch;

  // Shared with the watch, which may outlive this.
  const std::shared_ptr<State> state_;
  const std::shared_ptr<WatchThread> thread_;
};

}  // namespace quorvance
