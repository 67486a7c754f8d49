#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>

#include "quorvance/platform/queues.h"

namespace quorvance {

/// Has work for a thread that the system may refuse.
class ThreadSeeker {
 public:
  virtual ~ThreadSeeker() = default;
  /// Starts a thread when work waits for one. Any thread, without a lock.
  virtual void seekThread() noexcept = 0;
};

/// Work that waits because the system refused a thread is tried again by whatever else of the
/// platform runs: each task, each post, and every second a timer of the main queue. Any thread,
/// once everybody has joined.
class ThreadRetries : public std::enable_shared_from_this<ThreadRetries> {
 public:
  static constexpr std::chrono::seconds kInterval{1};

  /// Before the first use; one of a kind of queue, more are a defect.
  void join(std::weak_ptr<ThreadSeeker> seeker) noexcept;
  /// Whose timers are used; before the first use.
  void useTimersOf(const std::shared_ptr<MainQueue>& queue);

  /// A thread was refused. Not under the mutex of a queue.
  void noteRefusal() noexcept;
  /// As above, by the main queue, whose own timers wait for that thread.
  void noteRefusalOfTimers() noexcept { isAnyRefused_ = true; }
  /// One load while no thread was refused. Not under the mutex of a queue.
  void retry() noexcept {
    if (isAnyRefused_.load(std::memory_order_relaxed)) retryAll();
  }

 private:
  void retryAll() noexcept;

  static constexpr std::size_t kMaxSeekers = 4;
  std::array<std::weak_ptr<ThreadSeeker>, kMaxSeekers> seekers_;
  std::size_t seekerCount_ = 0;
  std::weak_ptr<MainQueue> timers_;
  std::shared_ptr<PreparedTask> timer_;
  std::atomic<bool> isAnyRefused_{false};
};

}  // namespace quorvance
