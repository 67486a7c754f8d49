#include "platform/linux/threads/thread_retries.h"

#include <utility>

#include "base/fatal.h"

namespace quorvance {

void ThreadRetries::join(std::weak_ptr<ThreadSeeker> seeker) noexcept {
  if (seekerCount_ == seekers_.size()) fatalError("more queues than a platform has");
  seekers_[seekerCount_++] = std::move(seeker);
}

void ThreadRetries::useTimersOf(const std::shared_ptr<MainQueue>& queue) {
  timers_ = queue;
  timer_ = queue->prepare([weak = weak_from_this()](const PreparedTask::Owner&) {
    if (const auto retries = weak.lock()) retries->retry();
  });
}

void ThreadRetries::noteRefusal() noexcept {
  isAnyRefused_ = true;
  const auto queue = timers_.lock();
  if (queue && timer_) timer_->start(nullptr, kInterval);
}

void ThreadRetries::retryAll() noexcept {
  if (!isAnyRefused_.exchange(false)) return;
  for (std::size_t i = 0; i < seekerCount_; ++i) {
    if (const auto seeker = seekers_[i].lock()) seeker->seekThread();
  }
}

}  // namespace quorvance
