#pragma once

#include <memory>
#include <optional>
#include <string>

#include "network/quorvance_network_manager.h"

namespace quorvance {

/// What a screen listener asks of the manager that made it. Any thread; held strongly, as by all
/// deferred work.
class ScreenListenerOwner {
 public:
  virtual ~ScreenListenerOwner() = default;
  /// The user of the run; absent after a logout.
  virtual std::optional<std::string> userId() const = 0;
  /// False once the manager has been shut down.
  virtual bool isAccepting() const { return true; }
  /// Refreshes identity and settles a call under it: every call of a listener begins here.
  virtual PreparedCall prepareCall(Service service) = 0;
  virtual void sendCall(const PreparedCall& call, Json body, ReplyHandler handler) = 0;
  /// Refreshes identity and sends the body of a face image as it stands.
  virtual void sendImage(Json body, ReplyHandler handler) = 0;
};

}  // namespace quorvance
