#pragma once

#include <memory>

#include "platform/linux/bus/bus_place.h"
#include "platform/linux/facts/sandbox.h"
#include "platform/linux/threads/watch_thread.h"
#include "quorvance/platform/authorization.h"

namespace quorvance {

/// What the user answered, as the desktop's permission store keeps it.
struct StoredPermissions {
  /// The first reading has ended, be it that nobody answered.
  bool isRead = false;
  /// The application runs in a sandbox, where the store decides on the camera.
  bool isSandboxed = false;
  AuthorizationStatus camera = AuthorizationStatus::notDetermined;
  AuthorizationStatus location = AuthorizationStatus::notDetermined;
};

/// The permission store of the desktop portals, on the session bus: followed in the background from
/// the first question on. Answers at once, from memory. Any thread; guarded by the state's mutex.
class PermissionStore {
 public:
  /// `mayStart`: whether a question may start the store.
  PermissionStore(BusPlace sessionBus, FindSandbox findSandbox, bool mayStart,
                  std::shared_ptr<WatchThread> thread);
  ~PermissionStore();

  StoredPermissions permissions();

 private:
  struct State;
  class StoreWatch;

  // Shared with the watch, which may outlive the store.
  const std::shared_ptr<State> state_;
  const std::shared_ptr<WatchThread> thread_;
};

}  // namespace quorvance
