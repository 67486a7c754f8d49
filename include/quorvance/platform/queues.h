#pragma once

#include <chrono>
#include <functional>
#include <memory>

#pragma GCC visibility push(default)

namespace quorvance {

using Task = std::function<void()>;

/// A task whose place in its queue exists already: starting it needs no memory and cannot fail.
/// What must happen even when memory runs out is prepared while there still is some.
class PreparedTask {
 public:
  virtual ~PreparedTask() = default;
  /// Posts the task, after `delay` where the queue knows delays. Any thread. `owner` is held until
  /// the task has run or is dropped. Started again while it waits, it runs once.
  virtual void start(std::shared_ptr<void> owner,
                     std::chrono::milliseconds delay = {}) noexcept = 0;
};

/// The serial queue on which retries, periodic work and finishing work run. A host with an event
/// loop of its own gives one that runs there; otherwise the platform runs a thread.
/// All calls come from any thread, return at once, never run the task inside the call and never
/// throw: what there is no memory for is dropped. A queue that is destroyed drops what waits.
class MainQueue {
 public:
  virtual ~MainQueue() = default;
  /// Runs the task after everything that was posted before.
  virtual void post(Task task) = 0;
  /// Runs the task once when `delay` has passed on a monotonic clock; of equal times, in the order
  /// of the calls. There is no cancellation.
  virtual void postAfter(std::chrono::milliseconds delay, Task task) = 0;
  /// Null without memory. Unless a queue does better, the task is merely posted when it is started,
  /// and then needs memory after all. Must not be started after the end of the queue.
  virtual std::shared_ptr<PreparedTask> prepare(Task task);
};

/// What kind of background work a task is; it decides what the task may wait for.
enum class WorkLane {
  /// Host and library completions: they run beside each other.
  completions,
  /// Disk work: one task at a time, first in first out.
  files,
  /// Reads of device facts (files, buses): one task at a time, first in first out.
  facts,
};

/// Background work. Called from any thread, returns at once, never throws: what there is no memory
/// for is dropped. A hung task of one lane holds up no task of another.
class BackgroundQueue {
 public:
  virtual ~BackgroundQueue() = default;
  virtual void post(WorkLane lane, Task task) = 0;
  /// As that of a main queue; delays are not kept.
  virtual std::shared_ptr<PreparedTask> prepare(WorkLane lane, Task task);
};

}  // namespace quorvance

#pragma GCC visibility pop
