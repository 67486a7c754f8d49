#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace quorvance {

/// A mutex that is waited for until a deadline, for std::unique_lock. It stands for
/// std::timed_mutex, whose locking the thread sanitizer of gcc 12 does not see.
class BoundedMutex {
 public:
  /// False when another thread had it all the time.
  bool try_lock_until(std::chrono::steady_clock::time_point deadline) {
    std::unique_lock lock(mutex_);
    if (!changed_.wait_until(lock, deadline, [this] { return !isLocked_; })) return false;
    isLocked_ = true;
    return true;
  }
  void unlock() {
    const std::lock_guard lock(mutex_);
    isLocked_ = false;
    changed_.notify_one();
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool isLocked_ = false;
};

}  // namespace quorvance
