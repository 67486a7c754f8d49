#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "quorvance/platform/queues.h"

namespace quorvance {

/// Tasks in the order of their due times; of equal times, in the order of adding. Each lies in a
/// node of its own, which is made beforehand: adding and taking need no memory. Not thread-safe.
class TimedTasks {
 public:
  using Clock = std::chrono::steady_clock;

  /// What waits: a task, or in its stead something that is prepared and shared.
  struct Item {
    Task task;
    std::shared_ptr<PreparedTask> prepared;
    PreparedTask::Owner owner;
  };

 private:
  using Items = std::map<std::pair<Clock::time_point, std::uint64_t>, Item>;

 public:
  /// Owns one item; empty when there is none.
  using Node = Items::node_type;

  /// Throws std::bad_alloc.
  static Node makeNode(Item item);
  /// `delay` after `now`; less than nothing counts as nothing, and no delay is too long.
  void add(Clock::time_point now, std::chrono::milliseconds delay, Node node) noexcept;
  std::optional<Clock::time_point> nextDue() const;
  /// Takes the first item out when it is due at `now`.
  Node takeDue(Clock::time_point now) { return takeDue(now, nextTicket_); }
  /// As above, but leaves what was added after `ticket` was asked for.
  Node takeDue(Clock::time_point now, std::uint64_t ticket) noexcept;
  std::uint64_t ticket() const { return nextTicket_; }

 private:
  Items items_;
  std::uint64_t nextTicket_ = 0;
};

}  // namespace quorvance
