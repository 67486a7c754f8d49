#pragma once

#include "quorvance/standard_library.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#pragma GCC visibility push(default)

namespace quorvance {

/// What is only known once a process dies. Texts are written as the inside of a JSON string.
enum class CrashPlaceholder { nothing, callStack, reason, name, milliseconds };

/// Bytes of a report that are known beforehand, and what is written after them.
struct CrashTemplatePart {
  std::string bytes;
  CrashPlaceholder next = CrashPlaceholder::nothing;
  bool operator==(const CrashTemplatePart&) const = default;
};

/// A whole report but for its placeholders.
using CrashReportTemplate = std::vector<CrashTemplatePart>;

struct SignalPlan {
  /// As "SIGBUS"; a name for which this system has no signal is left out.
  std::string name;
  std::string reason;
  CrashReportTemplate reportTemplate;
  bool operator==(const SignalPlan&) const = default;
};

/// A crash, for those who are told of it while the process still stands.
struct CaughtCrash {
  bool isException = false;
  std::string name;
  std::string reason;
  /// Symbols, one a line.
  std::string callStack;
  /// The trap has dealt with the report: it is on the disk, or its category is full.
  bool isStored = false;
};

// Hosts that use Qt have a macro of this name by default.
#pragma push_macro("signals")
#undef signals

/// What a dying process writes and whom it tells.
struct CrashPlan {
  std::vector<SignalPlan> signals;
  CrashReportTemplate exceptionTemplate;
  /// Where reports are written, as an absolute path; it is made anew when it is missing. Absent:
  /// none is written, and those who are told of a crash store it.
  std::optional<std::string> folder;
  /// Reports are named by this word, a UUID and ".json"; with `maxFiles` of that word there, no
  /// further one is written.
  std::string category;
  std::size_t maxFiles = 0;
  /// Asked first, inside the signal handler: takes no lock and no memory. When it is false the
  /// process ends unreported.
  bool (*isAnyoneListening)() noexcept = nullptr;
  /// Runs on a thread of the trap's, once a crash, after the report is on the disk. The process
  /// waits two seconds at most, and not at all while an earlier call hangs.
  std::function<void(const CaughtCrash&)> tell;
};

#pragma pop_macro("signals")

/// Catches what ends this process: fatal signals, each of which ends in SIGKILL, and uncaught C++
/// exceptions, after which the terminate handler that was installed before runs. There is one trap
/// in a process, whatever objects stand for it.
class CrashTrap {
 public:
  virtual ~CrashTrap() = default;
  /// Any thread. Takes effect at once and lasts until the process ends; a further plan replaces the
  /// one before, and no handler is ever installed over itself. Signals that the host ignores, of
  /// those that are no faults, stay ignored. In trouble (no memory, no thread) nothing is
  /// installed.
  virtual void install(CrashPlan plan) = 0;
};

}  // namespace quorvance

#pragma GCC visibility pop
