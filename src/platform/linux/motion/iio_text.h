#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "quorvance/platform/motion.h"

namespace quorvance {

/// A decimal number, without anything around it; absent for every other text, infinities and what
/// is no number included. The process's locale plays no part.
std::optional<double> numberIn(std::string_view text);

/// How a sensor is mounted: three rows, one for each axis of the device, of the shares that the
/// sensor's own axes have in it.
using MountMatrix = std::array<std::array<double, 3>, 3>;
inline constexpr MountMatrix kMountedStraight = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

/// Reads the kernel's form, "1, 0, 0; 0, 1, 0; 0, 0, 1". Absent for what is none, and for a matrix
/// that would stretch or skew, which no way of mounting a sensor does.
std::optional<MountMatrix> mountMatrixIn(std::string_view text);

/// The reading in the axes of the device. No coordinate is a negative zero.
MotionSample inDeviceAxes(const MountMatrix& mounting, const std::array<double, 3>& reading);

}  // namespace quorvance
