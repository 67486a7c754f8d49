#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "platform/linux/threads/thread_retries.h"
#include "quorvance/platform/queues.h"

namespace quorvance {

/// Something whose changes a WatchThread waits for. It is called on that thread alone.
class Watch {
 public:
  /// What to wait for next: whichever comes first.
  struct Need {
    int descriptor = -1;
    /// As for poll(2).
    short events = 0;
    std::optional<std::chrono::steady_clock::time_point> deadline{};
  };

  virtual ~Watch() = default;
  virtual Need need() = 0;
  /// Takes what has come. False when there is nothing more to wait for; the watch is then dropped.
  /// One that finds no memory goes on, so it takes the event before it needs any.
  virtual bool run() = 0;
};

/// The thread that waits for the kernel and for buses, "qv-watch": one for all watches. It exists
/// while there is any, and wakes up for nothing else.
///
/// Calls come from any thread and wait for nothing. When the system has no thread to give, the
/// tasks wait (thread_retries.h). Destroying it ends the thread in its own time and drops the
/// watches there; no call ever joins it. When the process ends normally it comes to rest. In a
/// forked child, which has no such thread, calls do nothing. Guarded by the state's mutex.
class WatchThread {
 public:
  explicit WatchThread(std::shared_ptr<ThreadRetries> retries = std::make_shared<ThreadRetries>());
  ~WatchThread();
  WatchThread(const WatchThread&) = delete;
  WatchThread& operator=(const WatchThread&) = delete;

  /// Runs the task on the thread, which is started for it. A task that finds no memory is lost.
  void post(Task task);
  void add(std::shared_ptr<Watch> watch);

 private:
  class State;

  // Shared with the thread, which may outlive this object.
  const std::shared_ptr<State> state_;
};

}  // namespace quorvance
