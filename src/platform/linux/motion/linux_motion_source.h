#pragma once

// Motion from the kernel's industrial I/O files. What lives here, in the order in which a sample
// comes by:
//   iio_sensor_finder   finds a sensor's files and reads them into the seam's units and axes
//                       (iio_text: the forms of their texts)
//   motion_sampler      the threads: who reads when, and what becomes of a sensor that hangs
//   sampling_plan       what the threads are to do: who wants which samples, what is due
//                       (gravity_filter: gravity for devices without a sensor of it)
//   sample_outbox       the way to the queue: one post a round
//   linux_motion_source the seam's face of it all
//
// The life of a sample: startUpdates() notes a subscription under a number of its own and wakes or
// starts "qv-motion". That thread looks for the sensor, each time anew: a device may have been
// plugged in or out, its scale changed. Then it reads at the asked interval, limited by the rate of
// the device, and posts what one round gave to the queue. There the subscription is looked up by
// its number; a sample whose subscription is gone is dropped. stopUpdates() removes the
// subscription and waits for nobody.

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>

#include "platform/linux/motion/motion_sampler.h"
#include "platform/linux/motion/sensor_reader.h"
#include "quorvance/platform/motion.h"

namespace quorvance {

/// The sensors as one listener drives them; see MotionManager. Without an interval set, samples
/// come as fast as the sensor gives new ones. A reading that fails is no sample: handlers are never
/// called without one. In a forked child it does nothing. Any thread; the sampler guards itself.
class LinuxMotionManager : public MotionManager {
 public:
  explicit LinuxMotionManager(std::shared_ptr<MotionSampler> sampler);
  /// Stops what it has started, and waits for nothing.
  ~LinuxMotionManager() override;
  LinuxMotionManager(const LinuxMotionManager&) = delete;
  LinuxMotionManager& operator=(const LinuxMotionManager&) = delete;

  bool isAvailable(MotionSensor sensor) override;
  void setUpdateInterval(MotionSensor sensor, std::chrono::microseconds interval) override;
  void startUpdates(MotionSensor sensor, std::shared_ptr<MainQueue> queue,
                    MotionHandler handler) override;
  void stopUpdates(MotionSensor sensor) override;

 private:
  std::atomic<std::int64_t>& microsecondsOf(MotionSensor sensor);

  const std::shared_ptr<MotionSampler> sampler_;
  // In the order of MotionSensor.
  std::array<std::atomic<std::int64_t>, 4> intervals_ = {};
};

/// Its managers share one sampler, and so the threads and what is known of the sensors.
/// Immutable.
class LinuxMotionSource : public MotionSource {
 public:
  /// `queue` is where samples go that a listener starts, whatever thread it is on.
  LinuxMotionSource(std::shared_ptr<SensorFinder> finder, std::shared_ptr<MainQueue> queue);

  std::shared_ptr<MotionManager> makeManager() override;
  std::shared_ptr<MainQueue> currentQueue() override;

 private:
  const std::shared_ptr<MotionSampler> sampler_;
  const std::shared_ptr<MainQueue> queue_;
};

}  // namespace quorvance
