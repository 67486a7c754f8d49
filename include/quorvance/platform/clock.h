#pragma once

#include "quorvance/standard_library.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// The wall clock. Called from any thread.
class WallClock {
 public:
  virtual ~WallClock() = default;
  /// Seconds since 1970-01-01T00:00:00Z.
  virtual double secondsSince1970() = 0;
};

}  // namespace quorvance

#pragma GCC visibility pop
