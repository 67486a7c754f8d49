// The time of day as the log and the wire have it.
#pragma once

#include <chrono>
#include <cstdint>

namespace risk_server {

// Since 1970.
inline std::int64_t millisecondsNow() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

}  // namespace risk_server
