#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

#include "quorvance/platform/queues.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// The motion sensors that a screen listener samples.
enum class MotionSensor {
  /// Acceleration, gravity included, in g (1 g is 9.80665 m/s^2).
  accelerometer,
  /// Gravity alone, in g.
  deviceMotion,
  /// Rotation rate, in radians per second.
  gyroscope,
  /// Magnetic field, in microtesla.
  magnetometer,
};

/// One reading in the axes of the device: x to the right of the screen, y to its top, z out of it
/// towards the user. A device at rest on its back reads z = -1 g, for the accelerometer as for
/// gravity. The kernel's industrial I/O sensors count the other way: their source turns the sign
/// before it delivers.
struct MotionSample {
  double x = 0;
  double y = 0;
  double z = 0;
};

/// Absent when the sensor failed to give a reading. One with a value that is not finite is dropped.
using MotionHandler = std::function<void(const std::optional<MotionSample>&)>;

/// The sensors as one screen listener drives them. Called from any thread, also from the host's
/// main thread in the middle of a touch: every call returns at once and waits for no sensor. Throws
/// nothing.
class MotionManager {
 public:
  virtual ~MotionManager() = default;
  /// From memory. A manager that does not know yet answers true; starting a sensor that turns out
  /// to be missing then does nothing.
  virtual bool isAvailable(MotionSensor sensor) = 0;
  /// How often samples are asked for; the sensor's own fastest rate is the limit.
  virtual void setUpdateInterval(MotionSensor sensor, std::chrono::microseconds interval) = 0;
  /// Delivers samples on the queue until the sensor is stopped or started again; a sample that was
  /// read before that and not delivered yet is dropped.
  virtual void startUpdates(MotionSensor sensor, std::shared_ptr<MainQueue> queue,
                            MotionHandler handler) = 0;
  /// No sample of an earlier start is delivered once this has returned, save one whose delivery
  /// another thread has begun.
  virtual void stopUpdates(MotionSensor sensor) = 0;
};

/// Where motion managers come from. Any thread; throws nothing.
class MotionSource {
 public:
  virtual ~MotionSource() = default;
  /// Passive: no thread, no file. Never null.
  virtual std::shared_ptr<MotionManager> makeManager() = 0;
  /// The queue on which samples are delivered that the calling thread starts; null when there is
  /// none, and then nothing is started.
  virtual std::shared_ptr<MainQueue> currentQueue() = 0;
};

}  // namespace quorvance

#pragma GCC visibility pop
