#pragma once

// Stateful doubles of the seam, with switches for faults. No static state: a test is a world of its
// own. Start reading at test_world.h.

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "quorvance/platform/clock.h"
#include "quorvance/platform/queues.h"

namespace quorvance {

/// The clock and all queues of a test in one: time stands still until a test advances it, and work
/// runs when a test lets it. Tasks may be posted from any thread; they run on the test's.
///
/// Work that is due runs in the order in which it was posted, whatever its queue. A lane that is
/// held keeps its tasks, as a disk or a bus that never answers does.
class ManualExecutor : public WallClock, public MainQueue, public BackgroundQueue {
 public:
  explicit ManualExecutor(std::int64_t startMilliseconds = 1'700'000'000'000);
  ~ManualExecutor() override;

  double secondsSince1970() override;
  void post(Task task) override;
  void postAfter(std::chrono::milliseconds delay, Task task) override;
  void post(WorkLane lane, Task task) override;

  /// Runs what is due now, and what that posts, until nothing is.
  void run();
  /// Advances to each due time in turn and runs what is due there; ends `duration` later.
  void advance(std::chrono::milliseconds duration);
  std::int64_t nowMilliseconds() const;

  void hold(WorkLane lane);
  void release(WorkLane lane);
  /// Drops all that waits: deferred work holds managers, which hold queues.
  void dropAll();
  /// Drops all that waits and all that comes from now on, also from other threads.
  void close();
  /// How often postAfter was called, by whatever thread.
  std::uint64_t delayedPosts() const;
  /// Waits, in real time, until it was called so often; false when the timeout comes first.
  bool waitForDelayedPosts(std::uint64_t count, std::chrono::seconds timeout) const;
  /// Work that waits, delayed work included.
  std::size_t waiting() const;

 private:
  struct Delayed {
    std::int64_t due;
    Task task;
  };
  struct Work {
    std::optional<WorkLane> lane;
    Task task;
  };

  bool runOne();
  void makeDueReady();

  mutable std::mutex mutex_;
  mutable std::condition_variable delayedPosted_;
  std::int64_t now_;
  std::uint64_t delayedPosts_ = 0;
  std::deque<Work> ready_;
  std::vector<Delayed> delayed_;  // in the order of their posting
  std::array<bool, 4> isHeld_{};
  bool isClosed_ = false;
};

}  // namespace quorvance
