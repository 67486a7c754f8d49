#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/json.h"
#include "quorvance/platform/motion.h"

namespace quorvance {

/// Where a motion sample came from (the enumerators are spelled as the interface is).
enum class SensorType : std::uint8_t { chb_lin_acc = 0, chb_gra = 1, chb_gyr_unc = 2, mag = 3 };

/// One raw motion sample; kept for debug output alone.
struct SensorEvent {
  /// Milliseconds since 1970: of the latest accelerometer sample, 0 before the first.
  std::int64_t timestamp = 0;
  double x = 0;
  double y = 0;
  double z = 0;
  SensorType sensorType = SensorType::chb_lin_acc;

  /// "[time,x,y,z,word]"
  std::string text() const;
};

/// The latest values of all sensors since sampling was started: the thirteen cells that a row is
/// made from. Zero until a sensor has delivered.
struct LatestMotion {
  /// Milliseconds since 1970, of the latest accelerometer sample.
  std::int64_t time = 0;
  MotionSample acceleration;
  MotionSample rotation;
  MotionSample gravity;
  MotionSample magneticField;
};

/// One accelerometer sample with what the other sensors said last. Kept as it is: its text and its
/// dictionary are made when somebody reads them.
struct MotionRow {
  std::int64_t time = 0;
  MotionSample acceleration;
  MotionSample rotation;
  MotionSample gravity;
  /// Only of a row taken in debug mode.
  std::optional<MotionSample> magneticField;
  /// Times of the latest touch sample and of the latest press.
  std::int64_t touchId = 0;
  std::int64_t pressId = 0;

  /// "[time,acceleration,gravity,rotation]": not the order of the row that is sent, and that is
  /// intended.
  std::string text() const;
  /// [acceleration, rotation, gravity], in debug mode [..., magnetic field].
  Json uploadRow() const;
  /// With the identifiers of the touch in progress. `sessionId` is the listener's own.
  Json dictionary(std::int64_t sessionId) const;
};

MotionRow makeMotionRow(const LatestMotion& latest, bool withMagneticField, std::int64_t touchId,
                        std::int64_t pressId);

}  // namespace quorvance
