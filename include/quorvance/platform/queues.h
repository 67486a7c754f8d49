#pragma once

#include "quorvance/standard_library.h"

#include <chrono>
#include <functional>
#include <memory>

#pragma GCC visibility push(default)

namespace quorvance {

using Task = std::function<void()>;

/// A task that its queue has made room for beforehand: starting it needs no memory. For what must
/// happen even when memory has run out.
class PreparedTask {
 public:
  using Owner = std::shared_ptr<const void>;
  /// What the task does; it is given the owner with which it was started.
  using Body = std::function<void(const Owner& owner)>;

  virtual ~PreparedTask() = default;
  /// Posts the task, after `delay` where the queue knows delays, and holds `owner` until it has run
  /// or is dropped. Does nothing while the task waits already; once it runs, it can be started
  /// again. Any thread.
  virtual void start(Owner owner, std::chrono::milliseconds delay = {}) noexcept = 0;
};

/// The serial queue on which retries, periodic work and finishing work run. A host with an event
/// loop of its own gives one that runs there; otherwise the platform runs a thread.
/// All calls come from any thread, return at once, never run the task inside the call and never
/// throw: what there is no memory for is dropped. A queue that is destroyed drops what waits.
/// Tasks are dropped outside of all locks, since one that is dropped may post another.
class MainQueue {
 public:
  virtual ~MainQueue() = default;
  /// Runs the task after everything that was posted before.
  virtual void post(Task task) = 0;
  /// Runs the task once when `delay` has passed on a monotonic clock; of equal times, in the order
  /// of the calls. There is no cancellation.
  virtual void postAfter(std::chrono::milliseconds delay, Task task) = 0;
  /// Null without memory. A queue need not override this: the task is then posted when it is
  /// started, which needs memory after all. Not to be started after the end of the queue.
  virtual std::shared_ptr<PreparedTask> prepare(PreparedTask::Body body);
};

/// What kind of background work a task is; it decides what the task may wait for.
enum class WorkLane {
  /// Host and library completions: they run beside each other.
  completions,
  /// Disk work: one task at a time, first in first out.
  files,
  /// Reads of device facts (files, buses): one task at a time, first in first out.
  facts,
  /// Slow work of the host's own, as is the encoding of an image: one task at a time, first in
  /// first
  /// out.
  images,
};

/// Background work. Called from any thread, returns at once, never throws: what there is no memory
/// for is dropped, outside of all locks. A hung task of one lane holds up no task of another.
class BackgroundQueue {
 public:
  virtual ~BackgroundQueue() = default;
  virtual void post(WorkLane lane, Task task) = 0;
  /// As that of a main queue; delays are not kept.
  virtual std::shared_ptr<PreparedTask> prepare(WorkLane lane, PreparedTask::Body body);
};

}  // namespace quorvance

#pragma GCC visibility pop
