#pragma once

#include <semaphore.h>
#include <time.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <mutex>
#include <optional>

namespace quorvance {

/// Threads that wait for work, of whom the one that came last is woken first: what it needs is
/// still in the processor's cache, and those that are not needed stay idle. Guarded by the owner's
/// mutex, but for wake().
///
/// A condition variable would take the mutex in a way that makes its release another system call,
/// and wakes whom it likes.
template <std::size_t maxThreads>
class IdleThreads {
 public:
  IdleThreads() {
    for (sem_t& wakeUp : wakeUps_) sem_init(&wakeUp, 0, 0);
  }
  ~IdleThreads() {
    for (sem_t& wakeUp : wakeUps_) sem_destroy(&wakeUp);
  }
  IdleThreads(const IdleThreads&) = delete;
  IdleThreads& operator=(const IdleThreads&) = delete;

  std::size_t size() const { return count_; }

  /// Takes the thread that is to be woken next; absent when none waits.
  std::optional<std::size_t> take() {
    if (count_ == 0) return std::nullopt;
    return slots_[--count_];
  }
  /// Wakes a thread that was taken. With or without the mutex.
  void wake(std::size_t slot) { sem_post(&wakeUps_[slot]); }

  /// Waits as the thread of this slot until it is taken; false when the time has passed first. The
  /// mutex, which is locked, is released meanwhile.
  bool wait(std::size_t slot, std::unique_lock<std::mutex>& lock, std::chrono::milliseconds time) {
    slots_[count_++] = slot;
    lock.unlock();
    const bool isWoken = waitForWakeUp(slot, time);
    lock.lock();
    if (isWoken || !remove(slot)) {
      // Taken in the last moment: its wake-up is there or on its way.
      if (!isWoken) waitForWakeUp(slot, std::nullopt);
      return true;
    }
    return false;
  }

 private:
  // False when the time has passed, which an absent one never does.
  bool waitForWakeUp(std::size_t slot, std::optional<std::chrono::milliseconds> time) {
    const timespec end = time ? momentIn(*time) : timespec();
    sem_t* const wakeUp = &wakeUps_[slot];
    while ((time ? sem_clockwait(wakeUp, CLOCK_MONOTONIC, &end) : sem_wait(wakeUp)) != 0) {
      if (errno != EINTR) return false;
    }
    return true;
  }

  static timespec momentIn(std::chrono::milliseconds time) {
    const auto moment = std::chrono::steady_clock::now().time_since_epoch() + time;
    const auto seconds = std::chrono::floor<std::chrono::seconds>(moment);
    return {static_cast<time_t>(seconds.count()),
            static_cast<long>(std::chrono::nanoseconds(moment - seconds).count())};
  }

  bool remove(std::size_t slot) {
    for (std::size_t i = 0; i < count_; ++i) {
      if (slots_[i] != slot) continue;
      for (--count_; i < count_; ++i) slots_[i] = slots_[i + 1];
      return true;
    }
    return false;
  }

  std::array<sem_t, maxThreads> wakeUps_;
  // Those that wait, the last one on top.
  std::array<std::size_t, maxThreads> slots_ = {};
  std::size_t count_ = 0;
};

}  // namespace quorvance
