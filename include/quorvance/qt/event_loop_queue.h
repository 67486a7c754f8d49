#pragma once

#include <chrono>
#include <memory>

#include "quorvance/platform/queues.h"

#pragma GCC visibility push(default)

namespace quorvance::qt {

/// A main queue on the event loop of the application object, and on its thread. What waits when
/// that object ends never runs; an application object that is made later does not take it up.
class EventLoopQueue : public MainQueue {
 public:
  /// Any thread. Without an application object nothing ever runs. Throws std::bad_alloc alone.
  EventLoopQueue();
  /// Drops what waits, on the application's thread. Any thread.
  ~EventLoopQueue() override;
  EventLoopQueue(const EventLoopQueue&) = delete;
  EventLoopQueue& operator=(const EventLoopQueue&) = delete;

  void post(Task task) override;
  void postAfter(std::chrono::milliseconds delay, Task task) override;
  std::shared_ptr<PreparedTask> prepare(PreparedTask::Body body) override;

 private:
  class Loop;
  const std::shared_ptr<Loop> loop_;
};

}  // namespace quorvance::qt

#pragma GCC visibility pop
