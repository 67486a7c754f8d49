#include "platform/linux/motion/linux_motion_source.h"

#include <cstddef>
#include <new>
#include <utility>

#include "base/forked_child.h"

namespace quorvance {

using std::chrono::microseconds;

LinuxMotionManager::LinuxMotionManager(std::shared_ptr<MotionSampler> sampler)
    : sampler_(std::move(sampler)) {}

LinuxMotionManager::~LinuxMotionManager() {
  if (!isForkedChild()) sampler_->stop(this, std::nullopt);
}

bool LinuxMotionManager::isAvailable(MotionSensor sensor) {
  return !isForkedChild() && sampler_->isAvailable(sensor);
}

void LinuxMotionManager::setUpdateInterval(MotionSensor sensor, microseconds interval) {
  if (isForkedChild()) return;
  microsecondsOf(sensor).store(interval.count());
  sampler_->setInterval(this, sensor, interval);
}

void LinuxMotionManager::startUpdates(MotionSensor sensor, std::shared_ptr<MainQueue> queue,
                                      MotionHandler handler) {
  if (isForkedChild() || !queue || !handler) return;
  MotionSubscription subscription;
  subscription.owner = this;
  subscription.sensor = sensor;
  subscription.interval = microseconds(microsecondsOf(sensor).load());
  subscription.queue = std::move(queue);
  try {
    subscription.handler = std::make_shared<const MotionHandler>(std::move(handler));
    sampler_->start(std::move(subscription));
  } catch (const std::bad_alloc&) {
    // A process without memory has no samples.
  }
}

void LinuxMotionManager::stopUpdates(MotionSensor sensor) {
  if (!isForkedChild()) sampler_->stop(this, sensor);
}

std::atomic<std::int64_t>& LinuxMotionManager::microsecondsOf(MotionSensor sensor) {
  return intervals_[static_cast<std::size_t>(sensor)];
}

LinuxMotionSource::LinuxMotionSource(std::shared_ptr<SensorFinder> finder,
                                     std::shared_ptr<MainQueue> queue)
    : sampler_(std::make_shared<MotionSampler>(std::move(finder))), queue_(std::move(queue)) {}

std::shared_ptr<MotionManager> LinuxMotionSource::makeManager() {
  watchForForks();
  return std::make_shared<LinuxMotionManager>(sampler_);
}

std::shared_ptr<MainQueue> LinuxMotionSource::currentQueue() { return queue_; }

}  // namespace quorvance
