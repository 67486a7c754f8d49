#pragma once

#include <string>

#include "quorvance/crash_model.h"
#include "quorvance/platform/crash_trap.h"

namespace quorvance {

/// The version and model texts of every crash of this process; an unknown one is empty.
struct CrashVersions {
  std::string sdkVer;
  std::string iosVer;
  std::string devModel;
};

/// What a crash writes: the bytes of the stored reports, cut where something is only known once
/// the process dies. Whom it tells is left open.
CrashPlan makeCrashPlan(const CrashVersions& versions);

/// "Signal SIGSEGV(11) was raised.\n", with the number and the name of the server's vocabulary.
std::string signalReason(int number);

/// A crash as delegates are told of it.
CrashModel crashModelOf(const CaughtCrash& crash, const CrashVersions& versions);

}  // namespace quorvance
