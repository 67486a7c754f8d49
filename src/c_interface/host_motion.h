#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "quorvance/platform/motion.h"

namespace quorvance {

/// Motion samples that the host brings itself: each goes to every manager that has the sensor
/// started, at the host's own rate. Any thread.
class HostMotionSource : public MotionSource {
 public:
  /// Samples are delivered on the queue.
  explicit HostMotionSource(std::shared_ptr<MainQueue> queue);
  ~HostMotionSource() override;
  HostMotionSource(const HostMotionSource&) = delete;
  HostMotionSource& operator=(const HostMotionSource&) = delete;

  /// Makes it the one that deliver() reaches while it lives.
  static void install(const std::shared_ptr<HostMotionSource>& source);
  /// False when no source is installed.
  static bool deliver(MotionSensor sensor, const MotionSample& sample);

  std::shared_ptr<MotionManager> makeManager() override;
  std::shared_ptr<MainQueue> currentQueue() override { return queue_; }

 private:
  class Manager;
  struct Update;
  class Updates;

  const std::shared_ptr<MainQueue> queue_;
  const std::shared_ptr<Updates> updates_;
};

}  // namespace quorvance
