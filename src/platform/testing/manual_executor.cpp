#include "platform/testing/manual_executor.h"

#include <algorithm>
#include <utility>

namespace quorvance {

ManualExecutor::ManualExecutor(std::int64_t startMilliseconds) : now_(startMilliseconds) {}

ManualExecutor::~ManualExecutor() = default;

// Whole milliseconds, divided once: a double that grows by thousandths goes wrong at once.
double ManualExecutor::secondsSince1970() {
  return static_cast<double>(nowMilliseconds()) / 1000.0;
}

std::int64_t ManualExecutor::nowMilliseconds() const {
  const std::lock_guard lock(mutex_);
  return now_;
}

void ManualExecutor::post(Task task) {
  const std::lock_guard lock(mutex_);
  if (!isClosed_) ready_.push_back({std::nullopt, std::move(task)});
}

void ManualExecutor::post(WorkLane lane, Task task) {
  const std::lock_guard lock(mutex_);
  if (!isClosed_) ready_.push_back({lane, std::move(task)});
}

void ManualExecutor::postAfter(std::chrono::milliseconds delay, Task task) {
  const std::lock_guard lock(mutex_);
  if (isClosed_) return;
  delayed_.push_back({now_ + delay.count(), std::move(task)});
  ++delayedPosts_;
  delayedPosted_.notify_all();
}

std::uint64_t ManualExecutor::delayedPosts() const {
  const std::lock_guard lock(mutex_);
  return delayedPosts_;
}

bool ManualExecutor::waitForDelayedPosts(std::uint64_t count, std::chrono::seconds timeout) const {
  std::unique_lock lock(mutex_);
  return delayedPosted_.wait_for(lock, timeout, [&] { return delayedPosts_ >= count; });
}

bool ManualExecutor::runOne() {
  Task task;
  {
    const std::lock_guard lock(mutex_);
    const auto next = std::find_if(ready_.begin(), ready_.end(), [&](const Work& work) {
      return !work.lane || !isHeld_[static_cast<std::size_t>(*work.lane)];
    });
    if (next == ready_.end()) return false;
    task = std::move(next->task);
    ready_.erase(next);
  }
  task();
  return true;
}

void ManualExecutor::makeDueReady() {
  const std::lock_guard lock(mutex_);
  const auto later = std::stable_partition(delayed_.begin(), delayed_.end(),
                                           [&](const Delayed& work) { return work.due <= now_; });
  for (auto due = delayed_.begin(); due != later; ++due) {
    ready_.push_back({std::nullopt, std::move(due->task)});
  }
  delayed_.erase(delayed_.begin(), later);
}

void ManualExecutor::run() {
  makeDueReady();
  while (runOne()) makeDueReady();
}

void ManualExecutor::advance(std::chrono::milliseconds duration) {
  const std::int64_t end = nowMilliseconds() + duration.count();
  run();
  for (;;) {
    {
      const std::lock_guard lock(mutex_);
      const auto next =
          std::min_element(delayed_.begin(), delayed_.end(),
                           [](const Delayed& a, const Delayed& b) { return a.due < b.due; });
      if (next == delayed_.end() || next->due > end) {
        now_ = end;
        return;
      }
      now_ = next->due;
    }
    run();
  }
}

void ManualExecutor::hold(WorkLane lane) {
  const std::lock_guard lock(mutex_);
  isHeld_[static_cast<std::size_t>(lane)] = true;
}

void ManualExecutor::release(WorkLane lane) {
  const std::lock_guard lock(mutex_);
  isHeld_[static_cast<std::size_t>(lane)] = false;
}

// What goes may post again from its destructors; that goes too.
void ManualExecutor::dropAll() {
  while (waiting() > 0) {
    std::deque<Work> ready;
    std::vector<Delayed> delayed;
    const std::lock_guard lock(mutex_);
    ready.swap(ready_);
    delayed.swap(delayed_);
  }
}

void ManualExecutor::close() {
  {
    const std::lock_guard lock(mutex_);
    isClosed_ = true;
  }
  dropAll();
}

std::size_t ManualExecutor::waiting() const {
  const std::lock_guard lock(mutex_);
  return ready_.size() + delayed_.size();
}

}  // namespace quorvance
