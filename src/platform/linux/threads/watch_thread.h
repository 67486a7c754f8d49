#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/linux/threads/library_thread.h"
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
  /// What was needed has come. False when there is nothing more to wait for; the watch is then
  /// dropped.
  virtual bool run() = 0;
};

/// The thread that waits for the kernel and for buses, "qv-watch": one for all watches. It exists
/// while there is any, and wakes up for nothing else.
///
/// Calls come from any thread and wait for nothing. Destroying it ends the thread in its own time
/// and drops the watches there; no call ever joins it. In a forked child, which has no such thread,
/// calls do nothing. Guarded by the state's mutex.
class WatchThread {
 public:
  WatchThread();
  ~WatchThread();
  WatchThread(const WatchThread&) = delete;
  WatchThread& operator=(const WatchThread&) = delete;

  /// Runs the task on the thread, which is started for it. Dropped when the system has no thread to
  /// give.
  void post(Task task);
  void add(std::shared_ptr<Watch> watch);

 private:
  struct State;

  // Shared with the thread, which may outlive this object.
  std::shared_ptr<State> state_;
  pid_t process_;
};

}  // namespace quorvance
