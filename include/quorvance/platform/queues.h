#pragma once

#include <chrono>
#include <functional>

#pragma GCC visibility push(default)

namespace quorvance {

using Task = std::function<void()>;

/// The serial queue on which retries, periodic work and finishing work run. A host with an event
/// loop of its own gives one that runs there; otherwise the platform runs a thread.
/// Both calls come from any thread, return at once, never run the task inside the call and never
/// throw. A queue that is destroyed drops what waits.
class MainQueue {
 public:
  virtual ~MainQueue() = default;
  /// Runs the task after everything that was posted before.
  virtual void post(Task task) = 0;
  /// Runs the task once when `delay` has passed on a monotonic clock; of equal times, in the order
  /// of the calls. There is no cancellation.
  virtual void postAfter(std::chrono::milliseconds delay, Task task) = 0;
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

/// Background work. Called from any thread, returns at once, never throws; a hung task of one lane
/// holds up no task of another.
class BackgroundQueue {
 public:
  virtual ~BackgroundQueue() = default;
  virtual void post(WorkLane lane, Task task) = 0;
};

}  // namespace quorvance

#pragma GCC visibility pop
