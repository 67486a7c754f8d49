#pragma once

#include <memory>

#include "platform/linux/threads/thread_retries.h"
#include "quorvance/platform/queues.h"

namespace quorvance {

/// A main queue on a thread of its own, for hosts without an event loop.
///
/// The thread starts with the first task; when the system has none to give, the tasks wait
/// (thread_retries.h). It lives until the queue is destroyed, which waits for the running task,
/// except on the queue's own thread: there the thread is detached and ends after that task. A task
/// that finds no memory is lost; one that throws anything else ends the process. Any thread;
/// guarded by the state's mutex.
class ThreadMainQueue : public MainQueue {
 public:
  explicit ThreadMainQueue(
      std::shared_ptr<ThreadRetries> retries = std::make_shared<ThreadRetries>());
  ~ThreadMainQueue() override;
  ThreadMainQueue(const ThreadMainQueue&) = delete;
  ThreadMainQueue& operator=(const ThreadMainQueue&) = delete;

  void post(Task task) override;
  void postAfter(std::chrono::milliseconds delay, Task task) override;
  std::shared_ptr<PreparedTask> prepare(PreparedTask::Body body) override;

 private:
  class State;

  // Shared with the thread, which may outlive the queue.
  const std::shared_ptr<State> state_;
  const std::shared_ptr<ThreadRetries> retries_;
};

}  // namespace quorvance
