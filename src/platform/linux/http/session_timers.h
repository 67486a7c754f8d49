#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <utility>

#include "quorvance/platform/queues.h"

namespace quorvance {

/// Tasks with a time, of equal times in the order of their adding. Not thread-safe: guarded by its
/// owner.
class SessionTimers {
 public:
  using Clock = std::chrono::steady_clock;
  /// Ten years: what is added to the time of now stays a time.
  static constexpr std::chrono::hours kLongestDelay{24 * 3650};
  /// Nothing is due: only a wake-up or the network ends the wait.
  static constexpr int kLongestWaitMilliseconds = std::numeric_limits<int>::max();

  SessionTimers() = default;
  /// One task. Throws std::bad_alloc.
  SessionTimers(std::chrono::milliseconds delay, Task task) {
    const auto wait = std::clamp<std::chrono::milliseconds>(delay, {}, kLongestDelay);
    tasks_.emplace(Clock::now() + wait, std::move(task));
  }

  /// Needs no memory.
  void take(SessionTimers& others) noexcept { tasks_.merge(others.tasks_); }
  void swap(SessionTimers& other) noexcept { tasks_.swap(other.tasks_); }
  bool isEmpty() const { return tasks_.empty(); }

  std::optional<Task> takeDue(Clock::time_point now) {
    if (tasks_.empty() || tasks_.begin()->first > now) return std::nullopt;
    std::optional<Task> task = std::move(tasks_.begin()->second);
    tasks_.erase(tasks_.begin());
    return task;
  }
  /// Until the first is due, rounded up: a wait that ends early would be begun again at once.
  int waitMilliseconds() const {
    if (tasks_.empty()) return kLongestWaitMilliseconds;
    const std::int64_t wait =
        std::chrono::ceil<std::chrono::milliseconds>(tasks_.begin()->first - Clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(wait, 0, kLongestWaitMilliseconds));
  }

 private:
  std::multimap<Clock::time_point, Task> tasks_;
};

}  // namespace quorvance
