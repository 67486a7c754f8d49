#pragma once

#include <cstdint>
#include <string>

namespace quorvance {

/// Milliseconds since 1970 as they go on the wire: seconds times 1000.0, truncated toward zero.
/// A product that is not finite or does not fit 64 bits is a programming error and stops the
/// process.
std::int64_t millisecondsFromSeconds(double seconds);

/// "yyyy-MM-dd'T'HH:mm:ss.SSS'Z'" in UTC; the fraction is exactly the millisecond remainder.
std::string dateText(std::int64_t milliseconds);

}  // namespace quorvance
