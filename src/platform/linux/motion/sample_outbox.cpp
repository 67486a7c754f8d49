#include "platform/linux/motion/sample_outbox.h"

#include <new>

namespace quorvance {

void SampleOutbox::add(const std::shared_ptr<MainQueue>& queue, const Item& item) noexcept {
  try {
    const std::shared_ptr<Batch> batch = batchFor(queue);
    if (batch->items.size() < kMaxWaitingSamples) batch->items.push_back(item);
  } catch (const std::bad_alloc&) {
    // Lost, as said.
  }
}

std::vector<SampleOutbox::Item> SampleOutbox::open(Batch& batch) {
  batch.isTaken = true;
  return std::exchange(batch.items, {});
}

std::shared_ptr<SampleOutbox::Batch> SampleOutbox::batchFor(
    const std::shared_ptr<MainQueue>& queue) {
  std::erase_if(posted_, [](const std::weak_ptr<Batch>& batch) { return batch.expired(); });
  for (const std::weak_ptr<Batch>& posted : posted_) {
    auto batch = posted.lock();  // a task lives, so its queue does
    if (batch && batch->queue == queue.get() && !batch->isTaken) return batch;
  }
  auto batch = std::make_shared<Batch>(Batch{queue.get()});
  posted_.push_back(batch);
  unposted_.push_back({queue, batch});
  return batch;
}

}  // namespace quorvance
