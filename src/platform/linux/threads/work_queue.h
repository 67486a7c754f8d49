#pragma once

#include <chrono>
#include <cstddef>
#include <memory>

#include "platform/linux/threads/thread_retries.h"
#include "platform/linux/threads/wake_ups.h"
#include "quorvance/platform/queues.h"

namespace quorvance {

/// Background work on at most five threads, which start on demand and end when idle.
///
/// Completions run two tasks at a time, every other lane one: together as many as there
/// are threads, so a task that its lane admits never waits for a thread. With one hung task of each
/// kind every lane but the hung one goes on, and one more completion at a time still runs.
/// When the system has no thread to give, the tasks wait (thread_retries.h). A task that finds no
/// memory is lost; one that throws anything else ends the process. Destroying the queue drops what
/// waits and waits for what runs, but not for the host's thread-local objects; on one of its own
/// threads it waits for nothing. It never waits for files: what that lane holds is finished on its
/// thread, kMaxTasksAfterEnd tasks that begin within kMaxTimeAfterEnd. When the process ends
/// normally the file lane finishes what it holds, within kMaxExitDelay; the other lanes begin with
/// nothing more. Any thread; guarded by the state's mutex.
class WorkQueue : public BackgroundQueue {
 public:
  static constexpr std::size_t kMaxThreads = 5;
  static constexpr std::chrono::milliseconds kIdleTime{10'000};
  static constexpr std::size_t kMaxTasksAfterEnd = 500;
  static constexpr std::chrono::seconds kMaxTimeAfterEnd{10};

  /// `idleTime`: how long a thread waits for another task before it ends.
  explicit WorkQueue(std::chrono::milliseconds idleTime = kIdleTime,
                     std::shared_ptr<ThreadRetries> retries = std::make_shared<ThreadRetries>());
  ~WorkQueue() override;
  WorkQueue(const WorkQueue&) = delete;
  WorkQueue& operator=(const WorkQueue&) = delete;

  void post(WorkLane lane, Task task) override;
  std::shared_ptr<PreparedTask> prepare(WorkLane lane, PreparedTask::Body body) override;
  /// For one thread at a time; without effect once the queue is gone.
  std::weak_ptr<WakeUps> wakeUps() const;
  /// Waits until the lane has finished what was posted before, at once when there is nothing; false
  /// when `deadline` comes first. Only for a lane that runs one task at a time, and not from one of
  /// its tasks.
  bool drain(WorkLane lane, std::chrono::steady_clock::time_point deadline);

 private:
  class State;

  // Shared with the threads, which may outlive the queue.
  const std::shared_ptr<State> state_;
};

}  // namespace quorvance
