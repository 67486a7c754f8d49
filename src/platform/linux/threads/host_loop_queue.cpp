#include "quorvance/platform/host_loop_queue.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <mutex>
#include <optional>
#include <utility>

#include "base/forked_child.h"
#include "platform/linux/threads/timed_queue.h"

namespace quorvance {
namespace {

// Absolute time of CLOCK_MONOTONIC, which is what steady_clock counts; 0 disarms.
itimerspec timerSettingFor(std::optional<TimedQueue::Clock::time_point> due) {
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
class HostLoopQueue::State : public TimedQueue {
 public:
  State() = default;
  ~State() override {
    if (descriptor_ >= 0) close(descriptor_);
  }

  int descriptor() const { return descriptor_; }

  // noexcept: a task that throws ends the process, as on the library's own threads.
  void dispatch() noexcept {
    std::unique_lock lock(mutex_);
    const std::uint64_t ticket = tasks_.ticket();
    const auto now = Clock::now();
    while (runDue(lock, now, ticket)) {
    }
    onNewFirst();
  }

 private:
  // Valid settings of a valid timer do not fail.
  void onNewFirst() noexcept override {
    const itimerspec setting = timerSettingFor(tasks_.nextDue());
    timerfd_settime(descriptor_, TFD_TIMER_ABSTIME, &setting, nullptr);
  }

  const int descriptor_ = timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
};

HostLoopQueue::HostLoopQueue() : state_(std::make_shared<State>()) {
  watchForForks();
  if (descriptor() < 0) state_->stop();  // nothing would ever run
}

HostLoopQueue::~HostLoopQueue() {
  if (!leakInForkedChild(state_)) state_->stop();
}

int HostLoopQueue::descriptor() const { return state_->descriptor(); }

void HostLoopQueue::dispatch() {
  if (isForkedChild()) return;
  const std::shared_ptr<State> state = state_;  // a task may destroy the queue
  state->dispatch();
}

void HostLoopQueue::post(Task task) { postAfter({}, std::move(task)); }

void HostLoopQueue::postAfter(std::chrono::milliseconds delay, Task task) {
  if (!isForkedChild()) state_->post(delay, std::move(task));
}

std::shared_ptr<PreparedTask> HostLoopQueue::prepare(PreparedTask::Body body) {
  return state_->prepare(std::move(body));
}

}  // namespace quorvance
