#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

#include "platform/linux/threads/timed_tasks.h"
#include "quorvance/platform/queues.h"

namespace quorvance {

/// What both main queues are inside: tasks with their times, and a mutex. How the tasks get to run
/// is the difference between them. Any thread; outlives the queue while a task runs.
class TimedQueue : public std::enable_shared_from_this<TimedQueue> {
 public:
  using Clock = TimedTasks::Clock;

  virtual ~TimedQueue() = default;
  TimedQueue(const TimedQueue&) = delete;
  TimedQueue& operator=(const TimedQueue&) = delete;

  /// Without memory the task is dropped.
  void post(std::chrono::milliseconds delay, Task task) noexcept;
  /// Null without memory.
  std::shared_ptr<PreparedTask> prepare(PreparedTask::Body body) noexcept;
  /// Drops what waits and takes nothing more.
  void stop() noexcept;

 protected:
  TimedQueue() = default;

  /// Under the mutex, when the first due time may have changed.
  virtual void onNewFirst() noexcept = 0;
  /// Without the mutex, after a task.
  virtual void onTaskEnd() noexcept {}
  /// Runs the first task when it is due and was there before `ticket`; the mutex, which is locked,
  /// is released meanwhile. False when there is none. A task that finds no memory is lost.
  bool runDue(std::unique_lock<std::mutex>& lock, Clock::time_point now, std::uint64_t ticket);

  std::mutex mutex_;
  TimedTasks tasks_;
  bool isStopped_ = false;

 private:
  class Prepared;
  void add(std::chrono::milliseconds delay, TimedTasks::Node node) noexcept;
};

}  // namespace quorvance
