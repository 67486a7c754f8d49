#pragma once

#include "quorvance/platform/clock.h"

namespace quorvance {

/// The system's real-time clock. Any thread.
class SystemWallClock : public WallClock {
 public:
  double secondsSince1970() override;
};

}  // namespace quorvance
