#pragma once

#include <chrono>
#include <memory>

#include "quorvance/platform/queues.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// A main queue that runs on the host's own event loop: the host watches `descriptor()` for
/// readability (GLib, Qt, epoll) and calls `dispatch()` on its thread when it is readable. In a
/// forked child every call returns at once and does nothing.
class HostLoopQueue : public MainQueue {
 public:
  /// Throws std::bad_alloc alone.
  HostLoopQueue();
  ~HostLoopQueue() override;
  HostLoopQueue(const HostLoopQueue&) = delete;
  HostLoopQueue& operator=(const HostLoopQueue&) = delete;

  /// Owned by the queue; -1 when the kernel refused one, and then nothing ever runs.
  int descriptor() const;
  /// Runs what is due now; tasks that they post are left for the next call. Host's loop thread
  /// only.
  void dispatch();

  void post(Task task) override;
  void postAfter(std::chrono::milliseconds delay, Task task) override;
  std::shared_ptr<PreparedTask> prepare(PreparedTask::Body body) override;

 private:
  class State;
  std::shared_ptr<State> state_;
};

}  // namespace quorvance

#pragma GCC visibility pop
