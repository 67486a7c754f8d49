#pragma once

#include <utility>
#include <vector>

#include "quorvance/platform/crash_trap.h"

namespace quorvance {

/// A trap in which nothing falls but what a test throws in.
class FakeCrashTrap : public CrashTrap {
 public:
  void install(CrashPlan plan) override { plans.push_back(std::move(plan)); }

  /// Does what a trap does with a crash; false when nobody listens.
  bool fall(const CaughtCrash& crash) const {
    if (plans.empty() || !plans.back().isAnyoneListening()) return false;
    plans.back().tell(crash);
    return true;
  }

  std::vector<CrashPlan> plans;
};

}  // namespace quorvance
