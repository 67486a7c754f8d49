#pragma once

#include <chrono>
#include <cmath>
#include <optional>

#include "quorvance/platform/motion.h"

namespace quorvance {

/// Gravity as a low-pass of the acceleration, for devices without a gravity sensor. Its step
/// response depends on time alone, not on how often samples come.
class GravityFilter {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// After it, 63 % of a turn of the device are followed; a tremor of the hand (8 to 12 Hz) is
  /// damped to a twentieth.
  static constexpr std::chrono::milliseconds kTimeConstant{300};

  /// Takes the acceleration of `now` and gives gravity, for which the first one stands.
  MotionSample filter(const MotionSample& acceleration, Time now) {
    if (!gravity_) gravity_ = acceleration;
    const std::chrono::duration<double> passed = now - last_;
    const std::chrono::duration<double> constant = kTimeConstant;
    const double share = 1 - std::exp(-passed / constant);
    gravity_->x += share * (acceleration.x - gravity_->x);
    gravity_->y += share * (acceleration.y - gravity_->y);
    gravity_->z += share * (acceleration.z - gravity_->z);
    last_ = now;
    return *gravity_;
  }

 private:
  std::optional<MotionSample> gravity_;
  Time last_;
};

}  // namespace quorvance
