#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "quorvance/platform/motion.h"

namespace quorvance {

/// What doubles were asked, in order: a test gives several the same list.
using CallList = std::vector<std::string>;

/// Motion sensors that a test moves. Any thread, as the interface has it; samples may be delivered
/// from several at once.
class FakeMotion : public MotionSource, public std::enable_shared_from_this<FakeMotion> {
 public:
  explicit FakeMotion(std::shared_ptr<MainQueue> queue) : queue_(std::move(queue)) {}

  /// Filled, when set, with "start gyroscope", "stop accelerometer"; before anything is sampled.
  std::shared_ptr<CallList> calls;
  /// Sensors that the device lacks.
  std::set<MotionSensor> missing;
  /// Whether calling threads have a queue.
  bool hasQueue = true;

  std::shared_ptr<MotionManager> makeManager() override;
  std::shared_ptr<MainQueue> currentQueue() override { return hasQueue ? queue_ : nullptr; }

  /// Delivers on the queue to everybody who has started the sensor by then.
  void deliver(MotionSensor sensor, std::optional<MotionSample> sample);
  /// The same on the calling thread, also when the sensor is stopped meanwhile.
  void deliverHere(MotionSensor sensor, std::optional<MotionSample> sample);
  bool isRunning(MotionSensor sensor) const;
  /// As it was last set, on any manager.
  std::chrono::microseconds interval(MotionSensor sensor) const;

 private:
  class Manager;
  struct Started {
    const void* manager;
    MotionSensor sensor;
    MotionHandler handler;
  };

  std::vector<MotionHandler> handlersOf(MotionSensor sensor) const;
  void note(const char* what, MotionSensor sensor);
  void forget(const void* manager, std::optional<MotionSensor> sensor);

  const std::shared_ptr<MainQueue> queue_;
  mutable std::mutex mutex_;
  std::vector<Started> started_;
  std::map<MotionSensor, std::chrono::microseconds> intervals_;
};

}  // namespace quorvance
