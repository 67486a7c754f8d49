#pragma once

#include "quorvance/crash_model.h"

namespace quorvance {

/// Told of every crash while it lives.
class CrashEyeDelegate {
 public:
  virtual ~CrashEyeDelegate() = default;
  virtual void crashEyeDidCatchCrash(const CrashModel& crash) = 0;
};

}  // namespace quorvance
