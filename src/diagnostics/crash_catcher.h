#pragma once

#include <memory>

#include "quorvance/crash_model.h"

namespace quorvance {

/// Told of every crash while it lives.
class CrashEyeDelegate {
 public:
  virtual ~CrashEyeDelegate() = default;
  virtual void crashEyeDidCatchCrash(const CrashModel& crash) = 0;
};

/// Catches what ends the host's process. The delegate is held weakly: the catcher keeps nobody
/// alive.
class CrashCatcher {
 public:
  virtual ~CrashCatcher() = default;
  virtual void install(std::weak_ptr<CrashEyeDelegate> delegate) = 0;
};

}  // namespace quorvance
