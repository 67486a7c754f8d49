#include "quorvance/qt/qt_motion.h"

namespace quorvance::qt {

// Built in place of qt_motion.cpp where there is no Qt Sensors.
std::shared_ptr<MotionSource> makeMotionSource(std::shared_ptr<MainQueue> /*queue*/) {
  return nullptr;
}

}  // namespace quorvance::qt
