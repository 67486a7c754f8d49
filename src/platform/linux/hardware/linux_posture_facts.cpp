#include "platform/linux/hardware/linux_posture_facts.h"

#include <cmath>

namespace quorvance {
namespace {

enum Orientation {
  kUnknown = 0,
  kPortrait = 1,
  kPortraitUpsideDown = 2,
  kLandscapeLeft = 3,
  kLandscapeRight = 4,
  kFaceUp = 5,
  kFaceDown = 6,
};

// In g: whatever is far from 1 measures more than gravity.
constexpr double kMinAtRest = 0.7;
constexpr double kMaxAtRest = 1.3;
// The cosine of 30 degrees.
constexpr double kFlat = 0.8660254;

}  // namespace

int orientationOf(const MotionSample& acceleration) {
  const auto& [x, y, z] = acceleration;
  const double size = std::sqrt(x * x + y * y + z * z);
  // Written so that a NaN is no rest either.
  if (!(size >= kMinAtRest && size <= kMaxAtRest)) return kUnknown;
  if (std::fabs(z) >= kFlat * size) return z < 0 ? kFaceUp : kFaceDown;
  if (std::fabs(y) >= std::fabs(x)) return y < 0 ? kPortrait : kPortraitUpsideDown;
  return x < 0 ? kLandscapeLeft : kLandscapeRight;
}

PostureFacts LinuxPostureFacts::read() {
  PostureFacts facts;
  const auto sensor = finder_->find(SensorKind::accelerometer);
  const auto acceleration = sensor ? sensor->read() : std::nullopt;
  if (acceleration) facts.orientation = orientationOf(*acceleration);
  return facts;
}

std::string LinuxPostureFacts::origin(std::string_view field) const {
  return field == "orientation" ? "accelerometer (/sys/bus/iio/devices), one reading"
                                : "no such switch on Linux";
}

}  // namespace quorvance
