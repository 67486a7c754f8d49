#pragma once

#include <time.h>

namespace quorvance {

/// A timer of the kernel's that ends the process with SIGKILL when reporting its death hangs. Made
/// in ordinary context; where the system gives none, nothing bounds the report.
class CrashWatchdog {
 public:
  CrashWatchdog();
  ~CrashWatchdog();
  CrashWatchdog(const CrashWatchdog&) = delete;
  CrashWatchdog& operator=(const CrashWatchdog&) = delete;

  /// Async-signal-safe; again: from the beginning.
  void arm();
  void disarm();

 private:
  void setSeconds(time_t seconds);

  timer_t timer_{};
  bool isMade_ = false;
};

}  // namespace quorvance
