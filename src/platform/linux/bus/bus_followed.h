#pragma once

#include <atomic>
#include <chrono>

namespace quorvance {

/// Decides when somebody who asks has a bus followed (again): at the first question, and at one
/// that comes some time after the bus went away or did not answer, so that a session that starts
/// late is found and a missing one costs little. Any thread.
class BusFollowed {
 public:
  using Clock = std::chrono::steady_clock;

  /// True when the caller is to begin now; the same is not asked of another before `ended`.
  bool shouldBegin() {
    if (isFollowed_.load(std::memory_order_relaxed)) return false;
    if (Clock::now() < notBefore_.load()) return false;
    return !isFollowed_.exchange(true);
  }
  /// What followed is gone.
  void ended(std::chrono::milliseconds pause) {
    notBefore_ = Clock::now() + pause;
    isFollowed_ = false;
  }

 private:
  std::atomic<bool> isFollowed_{false};
  std::atomic<Clock::time_point> notBefore_{Clock::time_point::min()};
};

}  // namespace quorvance
