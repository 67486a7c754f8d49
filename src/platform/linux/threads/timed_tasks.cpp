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

TimedTasks::Node TimedTasks::makeNode(Item item) {
  Items items;
  items.emplace(std::pair(Clock::time_point(), 0), std::move(item));
  return items.extract(items.begin());
}

void TimedTasks::add(Clock::time_point now, std::chrono::milliseconds delay, Node node) noexcept {
  node.key() = {dueAfter(now, delay), nextTicket_};
  items_.insert(std::move(node));
  ++nextTicket_;
}

std::optional<TimedTasks::Clock::time_point> TimedTasks::nextDue() const {
  if (items_.empty()) return std::nullopt;
  return items_.begin()->first.first;
}

TimedTasks::Node TimedTasks::takeDue(Clock::time_point now, std::uint64_t ticket) noexcept {
  if (items_.empty()) return {};
  const auto first = items_.begin();
  const auto& [due, number] = first->first;
  if (due > now || number >= ticket) return {};
  return items_.extract(first);
}

}  // namespace quorvance
