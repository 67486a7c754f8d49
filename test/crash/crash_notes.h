#pragma once

#include <cstdint>

namespace quorvance {

/// What a child notes while it dies, in a file that is mapped into its memory: it survives SIGKILL.
struct CrashNotes {
  /// Of the dying thread, since its fault.
  std::uint64_t allocatorCalls = 0;
  /// Monotonic nanoseconds at the fault.
  std::int64_t faultTime = 0;
};

}  // namespace quorvance
