#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>

#include "quorvance/platform/queues.h"

namespace quorvance {

/// Tasks in the order of their due times; of equal times, in the order of adding. Not thread-safe.
class TimedTasks {
 public:
  using Clock = std::chrono::steady_clock;

  /// `delay` after `now`; less than nothing counts as nothing, and no delay is too long.
  void add(Clock::time_point now, std::chrono::milliseconds delay, Task task);
  std::optional<Clock::time_point> nextDue() const;
  /// Takes the first task out when it is due at `now`.
  std::optional<Task> takeDue(Clock::time_point now) { return takeDue(now, nextTicket_); }
  /// As above, but leaves what was added after `ticket` was asked for.
  std::optional<Task> takeDue(Clock::time_point now, std::uint64_t ticket);
  std::uint64_t ticket() const { return nextTicket_; }
  bool isEmpty() const { return tasks_.empty(); }

 private:
  std::map<std::pair<Clock::time_point, std::uint64_t>, Task> tasks_;
  std::uint64_t nextTicket_ = 0;
};

}  // namespace quorvance
