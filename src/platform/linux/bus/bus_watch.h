#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>

#include "platform/linux/bus/bus_connection.h"
#include "platform/linux/bus/bus_place.h"
#include "platform/linux/threads/watch_thread.h"

namespace quorvance {

/// One bus that is followed on the watch thread: calls are answered later, signals are handed on.
///
/// Its life: `begin` connects and lets the subclass ask its first questions; then answers and
/// signals come until the bus goes away, which `ended` tells once, or until the thread goes. A call
/// that is not answered in time, or whose answer is an error, is answered with null; in the first
/// case that is the end, too, since what hung would go on being told as it was then. Watch thread
/// only.
class BusWatch : public Watch {
 public:
  using Answer = std::function<void(BusReader* reader)>;

  /// False, and `ended` was called, when there is no library or no bus.
  bool begin(const BusPlace& place);

  Need need() override;
  bool run() override;

 protected:
  void call(const BusCall& call, Answer answer);
  /// Hands on each signal that the rule matches (as D-Bus writes match rules).
  void listen(const std::string& rule, Answer handler);

  /// The connection is there; calls may be made.
  virtual void begun() = 0;
  virtual void ended() = 0;

 private:
  struct Handler {
    BusWatch* watch;
    Answer answer;
    bool isOnce;
  };

  static int handle(SdBusMessage* message, void* user, SdBusError* error) noexcept;
  bool isAlive();

  std::chrono::milliseconds timeout_ = kBusTimeout;
  std::list<Handler> handlers_;
  // Goes first: it holds pointers to the handlers.
  std::unique_ptr<BusConnection> connection_;
  bool wasReady_ = false;
  bool isUnanswered_ = false;
  BusClock::time_point readyUntil_{};
};

}  // namespace quorvance
