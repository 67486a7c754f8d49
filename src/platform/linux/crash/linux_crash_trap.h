#pragma once

#include "quorvance/platform/crash_trap.h"

namespace quorvance {

/// The crash trap of a Linux process. Several objects stand for one trap: the handlers of a process
/// are its own, and so is what they use; the last plan installed is the one in force.
///
/// What happens on a dying thread, in order: nothing but a check in a forked child; of several
/// dying threads one goes on; a timer of the kernel's bounds the rest; the report is written
/// (crash_recorder.h); the delegates are told from a parked thread (crash_reporter.h); SIGKILL. An
/// uncaught exception is recorded and told in the same way, then goes to the terminate handler that
/// was there before.
class LinuxCrashTrap : public CrashTrap {
 public:
  void install(CrashPlan plan) override;
};

}  // namespace quorvance
