#include "platform/linux/system_wall_clock.h"

#include <chrono>

namespace quorvance {

double SystemWallClock::secondsSince1970() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration<double>(now).count();
}

}  // namespace quorvance
