#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>

#include "quorvance/platform/motion.h"

namespace quorvance {

/// The sensors of the hardware, in the order in which a round reads them: the accelerometer comes
/// last, so that what a listener makes of its sample has the others' values of the same round.
enum class SensorKind { gravity, gyroscope, magnetometer, accelerometer };
inline constexpr std::size_t kSensorKinds = 4;
static_assert(SensorKind::accelerometer == SensorKind{kSensorKinds - 1});

/// Of a sensor that does not tell its rate, or has not told it yet.
inline constexpr std::chrono::microseconds kUsualSensorInterval{10'000};

/// One sensor as it was found. Called by one thread at a time.
class SensorReader {
 public:
  virtual ~SensorReader() = default;
  /// One reading, in the axes, signs and units of the seam; absent when the sensor gives none now.
  /// May block for seconds: a faulty sensor does.
  virtual std::optional<MotionSample> read() = 0;
  /// Asking more often tells nothing new.
  virtual std::chrono::microseconds shortestInterval() const = 0;
};

/// Looks for sensors. Any thread.
class SensorFinder {
 public:
  virtual ~SensorFinder() = default;
  /// Looks anew, remembering nothing; null when there is no such sensor. May block for seconds.
  virtual std::shared_ptr<SensorReader> find(SensorKind kind) = 0;
};

}  // namespace quorvance
