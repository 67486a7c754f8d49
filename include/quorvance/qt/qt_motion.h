#pragma once

#include <memory>

#include "quorvance/platform/motion.h"

#pragma GCC visibility push(default)

namespace quorvance::qt {

/// The sensors of Qt Sensors, in the units and axes of the seam: Qt's m/s^2, degrees per second and
/// tesla, and its sign of acceleration, are converted. Null where this library was built without Qt
/// Sensors, where Qt has no accelerometer here, on another than the application's thread, and
/// without an application object. Gravity alone is there where the sensor tells it apart.
///
/// Sensors run on the application's thread, from its event loop; samples are delivered on the
/// queue. Loads the plug-ins of Qt Sensors. Throws std::bad_alloc alone.
std::shared_ptr<MotionSource> makeMotionSource(std::shared_ptr<MainQueue> queue);

}  // namespace quorvance::qt

#pragma GCC visibility pop
