#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>

namespace quorvance {

/// Counts what was accepted and is neither answered nor stored yet. Any thread; guarded by one
/// mutex, which is held for a few instructions.
///
/// Work is counted by periods: a wait closes the running period and lasts until that one and those
/// before it are empty, so that what is accepted meanwhile prolongs nobody's wait.
class PendingWork : public std::enable_shared_from_this<PendingWork> {
 public:
  /// A piece of work, pending until the last copy of its mark ends. What follows from work has a
  /// copy, so that it counts as accepted together with it. An empty one marks nothing.
  using Mark = std::shared_ptr<const void>;

  /// Empty without memory.
  Mark begin() noexcept;
  std::size_t count() const;
  /// Waits until nothing of what is pending now is left; false when `deadline` comes first. Several
  /// threads may wait. May throw std::bad_alloc, and only when something is pending.
  bool waitForPresent(std::chrono::steady_clock::time_point deadline);

 private:
  class Piece;
  std::uint64_t add() noexcept;
  void end(std::uint64_t period) noexcept;
  std::uint64_t closePeriod();

  mutable std::mutex mutex_;
  std::condition_variable emptied_;
  std::size_t total_ = 0;
  std::uint64_t firstPeriod_ = 0;
  // The pieces of each period, from the first one that is not over; the last one is running.
  std::deque<std::size_t> periods_ = std::deque<std::size_t>(1);
};

}  // namespace quorvance
