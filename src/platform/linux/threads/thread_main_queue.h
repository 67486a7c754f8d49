#pragma once

#include <memory>

#include "platform/linux/threads/library_thread.h"
#include "quorvance/platform/queues.h"

namespace quorvance {

/// A main queue on a thread of its own, for hosts without an event loop.
///
/// The thread starts with the first task; when the system has none to give, the tasks wait and the
/// next post tries again. It lives until the queue is destroyed, which waits for the running task,
/// except on the queue's own thread: there the thread is let go and ends after that task. A task
/// that throws ends the process. Any thread; guarded by the state's mutex.
class ThreadMainQueue : public MainQueue {
 public:
  ThreadMainQueue();
  ~ThreadMainQueue() override;
  ThreadMainQueue(const ThreadMainQueue&) = delete;
  ThreadMainQueue& operator=(const ThreadMainQueue&) = delete;

  void post(Task task) override;
  void postAfter(std::chrono::milliseconds delay, Task task) override;

 private:
  struct State;
  static void run(State& state);

  // Shared with the thread, which may outlive the queue.
  std::shared_ptr<State> state_;
  LibraryThread thread_;
};

}  // namespace quorvance
