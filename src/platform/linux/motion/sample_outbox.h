#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "quorvance/platform/motion.h"
#include "quorvance/platform/queues.h"

namespace quorvance {

/// Samples on their way to the queues. What one round read travels in one post to each queue, and
/// while a post waits on its queue, what later rounds read joins it: a main thread that is busy
/// finds one task, not hundreds. Not thread-safe: guarded by its owner.
class SampleOutbox {
 public:
  /// Of one post. A queue that does not run for so long loses the samples that come then: ten
  /// seconds of one sensor are more than a screen keeps.
  static constexpr std::size_t kMaxWaitingSamples = 1024;

  struct Item {
    std::uint64_t subscription = 0;
    MotionSample sample;
  };
  struct Batch {
    const MainQueue* queue = nullptr;
    std::vector<Item> items = {};
    bool isTaken = false;
  };
  struct Post {
    std::shared_ptr<MainQueue> queue;
    std::shared_ptr<Batch> batch;
  };

  /// Without memory for it, the sample is lost.
  void add(const std::shared_ptr<MainQueue>& queue, const Item& item) noexcept;
  /// What the caller is to post: the batch, which the task is to own, to the queue.
  std::vector<Post> takeUnposted() { return std::exchange(unposted_, {}); }
  /// What a posted batch has come to hold; nothing joins it any more.
  static std::vector<Item> open(Batch& batch);

 private:
  std::shared_ptr<Batch> batchFor(const std::shared_ptr<MainQueue>& queue);

  std::vector<Post> unposted_;
  // The tasks own them: a queue that drops its tasks has no batch here any more.
  std::vector<std::weak_ptr<Batch>> posted_;
};

}  // namespace quorvance
