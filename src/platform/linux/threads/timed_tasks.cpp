#include "platform/linux/threads/timed_tasks.h"

#include <algorithm>

namespace quorvance {
namespace {

TimedTasks::Clock::time_point dueAfter(TimedTasks::Clock::time_point now,
                                       std::chrono::milliseconds delay) {
  using std::chrono::milliseconds;
  const auto longest = std::chrono::floor<milliseconds>(TimedTasks::Clock::time_point::max() - now);
  return now + std::clamp(delay, milliseconds::zero(), longest);
}

}  // namespace

void TimedTasks::add(Clock::time_point now, std::chrono::milliseconds delay, Task task) {
  tasks_.emplace(std::pair(dueAfter(now, delay), nextTicket_), std::move(task));
  ++nextTicket_;
}

std::optional<TimedTasks::Clock::time_point> TimedTasks::nextDue() const {
  if (tasks_.empty()) return std::nullopt;
  return tasks_.begin()->first.first;
}

std::optional<Task> TimedTasks::takeDue(Clock::time_point now, std::uint64_t ticket) {
  if (tasks_.empty()) return std::nullopt;
  const auto first = tasks_.begin();
  const auto& [due, number] = first->first;
  if (due > now || number >= ticket) return std::nullopt;
  Task task = std::move(first->second);
  tasks_.erase(first);
  return task;
}

}  // namespace quorvance
