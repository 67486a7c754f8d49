#include "platform/linux/threads/thread_main_queue.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>

#include "base/forked_child.h"
#include "platform/linux/threads/timed_tasks.h"

namespace quorvance {

struct ThreadMainQueue::State {
  std::mutex mutex;
  std::condition_variable changed;
  TimedTasks tasks;
  bool isStopped = false;

  /// Drops what waits, outside of the lock.
  void stop() {
    TimedTasks dropped;
    const std::lock_guard lock(mutex);
    isStopped = true;
    std::swap(dropped, tasks);
    changed.notify_one();
  }
};

ThreadMainQueue::ThreadMainQueue() : state_(std::make_shared<State>()) {}

ThreadMainQueue::~ThreadMainQueue() {
  if (leakInForkedChild(state_)) return;
  state_->stop();
  thread_.finish();
}

void ThreadMainQueue::post(Task task) {
  postAfter(std::chrono::milliseconds::zero(), std::move(task));
}

void ThreadMainQueue::postAfter(std::chrono::milliseconds delay, Task task) {
  if (!task) return;
  const std::lock_guard lock(state_->mutex);
  if (state_->isStopped) return;
  state_->tasks.add(TimedTasks::Clock::now(), delay, std::move(task));
  if (thread_.isStarted()) {
    state_->changed.notify_one();
  } else {
    // Refused by the system: the next post tries again.
    static_cast<void>(thread_.start("qv-main", [state = state_] { run(*state); }));
  }
}

void ThreadMainQueue::run(State& state) {
  std::unique_lock lock(state.mutex);
  while (!state.isStopped) {
    if (std::optional<Task> task = state.tasks.takeDue(TimedTasks::Clock::now())) {
      lock.unlock();
      (*task)();
      task.reset();  // what it holds may call back into the queue
      lock.lock();
    } else if (const auto due = state.tasks.nextDue()) {
      state.changed.wait_until(lock, *due);
    } else {
      state.changed.wait(lock);
    }
  }
}

}  // namespace quorvance
