#pragma once

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>

#include "biometrics/motion_row.h"
#include "biometrics/screen_recording.h"
#include "quorvance/platform/motion.h"
#include "state/inner_quorvance_data.h"

namespace quorvance {

/// Drives the motion sensors of one listener and feeds what they deliver to its recording.
///
/// Any thread. The sensors' owner may be the host's own code, so nothing is locked while it is
/// called. A start and a stop that meet still never mix: whoever comes second leaves its order to
/// the thread that is at it. Handlers hold the recording weakly and nothing else of the listener:
/// a sample that arrives late does nothing. While collection is off nothing is started, and what
/// runs ends with its next sample.
class MotionSampling {
 public:
  /// Without a source nothing is ever sampled.
  MotionSampling(std::shared_ptr<MotionSource> source, std::shared_ptr<InnerQuorvanceData> state,
                 std::shared_ptr<ScreenRecording> recording);
  /// Stops what runs.
  ~MotionSampling();
  MotionSampling(const MotionSampling&) = delete;
  MotionSampling& operator=(const MotionSampling&) = delete;

  /// Starts the available sensors with fresh values, also while they run; nothing when the calling
  /// thread has no queue. The magnetometer is started in debug mode alone.
  void start();
  /// Stops the available sensors.
  void stop();

 private:
  /// No queue: stop.
  struct Order {
    std::shared_ptr<MainQueue> queue;
    std::shared_ptr<LatestMotion> latest;
  };

  void carryOut(Order order);
  void drive(Order order);
  void startAll(const Order& order);
  void startOne(MotionSensor sensor, SensorType type, const Order& order);
  void stopAll();
  MotionHandler handlerFor(MotionSensor sensor, SensorType type,
                           std::shared_ptr<LatestMotion> latest) const;

  const std::shared_ptr<MotionSource> source_;
  const std::shared_ptr<MotionManager> manager_;
  const std::shared_ptr<InnerQuorvanceData> state_;
  const std::shared_ptr<ScreenRecording> recording_;
  std::atomic<bool> isStarted_{false};

  std::mutex mutex_;
  std::deque<Order> orders_;
  bool isBeingDriven_ = false;
};

}  // namespace quorvance
