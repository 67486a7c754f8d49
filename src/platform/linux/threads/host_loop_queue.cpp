#include "quorvance/platform/host_loop_queue.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <mutex>
#include <optional>
#include <utility>

#include "base/forked_child.h"
#include "platform/linux/threads/timed_tasks.h"

namespace quorvance {
namespace {

// Absolute time of CLOCK_MONOTONIC, which is what steady_clock counts; 0 disarms.
itimerspec timerSettingFor(std::optional<TimedTasks::Clock::time_point> due) {
  itimerspec setting = {};
  if (!due) return setting;
  const auto sinceBoot = due->time_since_epoch();
  const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceBoot);
  setting.it_value.tv_sec = seconds.count();
  setting.it_value.tv_nsec =
      std::chrono::duration_cast<std::chrono::nanoseconds>(sinceBoot - seconds).count();
  return setting;
}

}  // namespace

/// One timer does it all: it is set to the time of the first task, which for a posted task is now.
/// Setting it also takes back an expiry that nobody has read.
struct HostLoopQueue::State {
  const int descriptor = timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
  std::mutex mutex;
  TimedTasks tasks;
  bool isStopped = false;

  State() = default;
  ~State() {
    if (descriptor >= 0) close(descriptor);
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  /// Under the mutex. Valid settings of a valid timer do not fail.
  void setTimer() {
    const itimerspec setting = timerSettingFor(tasks.nextDue());
    timerfd_settime(descriptor, TFD_TIMER_ABSTIME, &setting, nullptr);
  }

  std::optional<Task> takeDue(TimedTasks::Clock::time_point now, std::uint64_t ticket) {
    const std::lock_guard lock(mutex);
    return tasks.takeDue(now, ticket);
  }

  // noexcept: a task that throws ends the process, as on the library's own threads.
  void runDue(TimedTasks::Clock::time_point now, std::uint64_t ticket) noexcept {
    while (const std::optional<Task> task = takeDue(now, ticket)) (*task)();
  }
};

HostLoopQueue::HostLoopQueue() : state_(std::make_shared<State>()) { watchForForks(); }

HostLoopQueue::~HostLoopQueue() {
  if (leakInForkedChild(state_)) return;
  TimedTasks dropped;
  const std::lock_guard lock(state_->mutex);
  state_->isStopped = true;
  std::swap(dropped, state_->tasks);
  state_->setTimer();
}

int HostLoopQueue::descriptor() const { return state_->descriptor; }

void HostLoopQueue::dispatch() {
  if (isForkedChild()) return;
  const std::shared_ptr<State> state = state_;  // a task may destroy the queue
  std::unique_lock lock(state->mutex);
  const std::uint64_t ticket = state->tasks.ticket();
  const auto now = TimedTasks::Clock::now();
  lock.unlock();
  state->runDue(now, ticket);
  lock.lock();
  state->setTimer();
}

void HostLoopQueue::post(Task task) {
  postAfter(std::chrono::milliseconds::zero(), std::move(task));
}

void HostLoopQueue::postAfter(std::chrono::milliseconds delay, Task task) {
  if (!task || isForkedChild()) return;
  const std::lock_guard lock(state_->mutex);
  if (state_->isStopped || state_->descriptor < 0) return;
  const auto before = state_->tasks.nextDue();
  state_->tasks.add(TimedTasks::Clock::now(), delay, std::move(task));
  if (state_->tasks.nextDue() != before) state_->setTimer();
}

}  // namespace quorvance
