#pragma once

#include <cstdint>
#include <string_view>

#include "platform/linux/crash/crash_call_stack.h"
#include "platform/linux/crash/crash_file.h"
#include "platform/linux/crash/crash_text.h"
#include "platform/linux/crash/mapped_memory.h"
#include "quorvance/platform/crash_trap.h"

namespace quorvance {

/// What came of recording a crash.
enum class CrashRecord { stored, full, failed };

/// Writes the one report of one crash. Made in ordinary context with all the memory it will ever
/// need; the rest is async-signal-safe, but for what CrashCallStack says. Not thread-safe.
///
/// The report is written twice under one name: with bare addresses first, then with symbols, whose
/// search may hang or fault in a damaged process; the first report then stays.
class CrashRecorder {
 public:
  /// For the forms and the folder of this plan.
  explicit CrashRecorder(const CrashPlan& plan);

  bool isUsable() const { return !memory_.span().empty(); }

  /// Of the calling thread's stack from `top` on (CrashCallStack::collect), now. Once.
  CrashRecord record(const CrashReportTemplate& reportTemplate, std::string_view name,
                     std::string_view reason, const void* top = nullptr);
  std::string_view callStack() const { return stack_.text(); }
  /// After another thread was stopped in the middle of its record().
  void removeTemporaries() { file_.removeTemporaries(); }

 private:
  bool write(const CrashReportTemplate& reportTemplate, std::string_view name,
             std::string_view reason);

  CrashCallStack stack_;
  CrashFile file_;
  MappedMemory memory_;
  CrashText report_;
  std::int64_t milliseconds_ = 0;
};

}  // namespace quorvance
