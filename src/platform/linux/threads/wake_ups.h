#pragma once

#include <memory>

namespace quorvance {

/// Wakes threads for what is posted to a queue. Between hold() and release() what the calling
/// thread posts wakes nobody, and then all of it wakes one, who wakes the next if there is work for
/// more. For one thread at a time, which must not wait for that work meanwhile.
class WakeUps {
 public:
  virtual ~WakeUps() = default;
  virtual void hold() noexcept = 0;
  virtual void release() noexcept = 0;
};

/// Holds them while it lives; nothing once the queue is gone.
class HeldWakeUps {
 public:
  explicit HeldWakeUps(const std::weak_ptr<WakeUps>& wakeUps) : wakeUps_(wakeUps.lock()) {
    if (wakeUps_) wakeUps_->hold();
  }
  ~HeldWakeUps() {
    if (wakeUps_) wakeUps_->release();
  }
  HeldWakeUps(const HeldWakeUps&) = delete;
  HeldWakeUps& operator=(const HeldWakeUps&) = delete;

 private:
  const std::shared_ptr<WakeUps> wakeUps_;
};

}  // namespace quorvance
