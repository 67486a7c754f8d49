#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string_view>

#include "quorvance/platform/crash_trap.h"

namespace quorvance {

/// A crash as the dying thread leaves it for the reporter; the texts stay where they are.
struct CrashNotice {
  const std::function<void(const CaughtCrash&)>* tell = nullptr;
  bool isException = false;
  bool isStored = false;
  std::string_view name;
  std::string_view reason;
  std::string_view callStack;
};

/// The thread "qv-crash", parked until somebody dies. It has memory of its own and blocks every
/// signal, so that a fault of its own ends the process at once.
///
/// Life: started once, never ended and never joined: the object lives as long as the process.
/// Parked; asked by one dying thread, which first writes its notice; parked again when the
/// delegates have been told.
class CrashReporter {
 public:
  /// Ordinary context, one caller at a time; false when the system gives no thread. Again: does
  /// nothing.
  bool start();

  /// Async-signal-safe. Has the notice told and waits for it, two seconds at most; returns at once
  /// while an earlier notice is still being told.
  void tell(const CrashNotice& notice);

 private:
  void run();

  bool isStarted_ = false;
  std::atomic<std::uint32_t> phase_{0};  // parked
  CrashNotice notice_;
};

}  // namespace quorvance
