#include "platform/linux/crash/linux_crash_trap.h"

#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <exception>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/linux/crash/crash_exception.h"
#include "platform/linux/crash/crash_recorder.h"
#include "platform/linux/crash/crash_reporter.h"
#include "platform/linux/crash/crash_signals.h"
#include "platform/linux/crash/crash_watchdog.h"
#include "platform/linux/storage/private_files.h"

namespace quorvance {
namespace {

/// A plan with all that carrying it out needs. An uncaught exception and the abort that follows it
/// are two crashes, hence two recorders.
struct ArmedPlan {
  explicit ArmedPlan(CrashPlan newPlan)
      : plan(std::move(newPlan)), signalRecorder(plan), exceptionRecorder(plan) {}

  bool isUsable() const { return signalRecorder.isUsable() && exceptionRecorder.isUsable(); }

  /// `tell` cannot be compared; equal bytes come of the same facts.
  bool serves(const CrashPlan& other) const {
    return plan.signals == other.signals && plan.exceptionTemplate == other.exceptionTemplate &&
           plan.folder == other.folder && plan.category == other.category &&
           plan.maxFiles == other.maxFiles && plan.isAnyoneListening == other.isAnyoneListening;
  }

  const SignalPlan* planOf(int number) const {
    for (const CaughtSignal& caught : kCaughtSignals) {
      if (caught.number != number) continue;
      for (const SignalPlan& signal : plan.signals) {
        if (signal.name == caught.name) return &signal;
      }
    }
    return nullptr;
  }

  const CrashPlan plan;
  CrashRecorder signalRecorder;
  CrashRecorder exceptionRecorder;
};

/// What is the process's own. Dying threads first say so in `crashing` or `terminating` and then
/// take the armed plan; whoever replaces it looks afterwards whether somebody is dying and then
/// lets the old one be.
struct TrapState {
  std::mutex installing;
  std::atomic<pid_t> process{0};
  std::atomic<pid_t> crashing{0};
  std::atomic<pid_t> terminating{0};
  std::atomic<ArmedPlan*> armed{nullptr};
  std::atomic<std::terminate_handler> previousTerminate{nullptr};
  CrashWatchdog watchdog;
  CrashReporter reporter;
};

// Handlers are plain functions. Leaked on purpose: they may run after every static destructor.
std::atomic<TrapState*> trapInForce{nullptr};

TrapState& trapOfProcess() {
  static auto* const trap = new TrapState();
  return *trap;
}

// A report must not be cut at a limit that is itself what the process dies of.
void allowLongFiles() {
  rlimit limit = {};
  if (getrlimit(RLIMIT_FSIZE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_FSIZE, &limit);
}

CrashNotice noticeOf(const ArmedPlan& armed, const CrashRecorder& recorder, CrashRecord record) {
  CrashNotice notice;
  notice.tell = &armed.plan.tell;
  notice.isStored = record != CrashRecord::failed;
  notice.callStack = recorder.callStack();
  return notice;
}

void reportSignal(TrapState& trap, int number, const void* faultingAt) {
  ArmedPlan* const armed = trap.armed.load();
  const SignalPlan* const plan = armed->planOf(number);
  if (plan == nullptr || !armed->plan.isAnyoneListening()) return;
  CrashRecorder& recorder = armed->signalRecorder;
  const CrashRecord record =
      recorder.record(plan->reportTemplate, plan->name, plan->reason, faultingAt);
  CrashNotice notice = noticeOf(*armed, recorder, record);
  notice.name = plan->name;
  notice.reason = plan->reason;
  trap.reporter.tell(notice);
  const pid_t terminating = trap.terminating.load();
  if (terminating != 0 && terminating != gettid()) armed->exceptionRecorder.removeTemporaries();
}

void onFatalSignal(int number, siginfo_t* /*info*/, void* context) {
  TrapState* const trap = trapInForce.load();
  if (trap == nullptr || getpid() != trap->process.load()) {
    // A forked child of the host: its death is none of ours, and the reporter is not there.
    const int errorNumber = errno;
    leaveToDefault(number);
    errno = errorNumber;
    return;
  }
  pid_t nobody = 0;
  if (!trap->crashing.compare_exchange_strong(nobody, gettid())) waitForEnd();
  trap->watchdog.arm();
  allowLongFiles();
  reportSignal(*trap, number, faultingInstruction(context));
  std::set_terminate(&std::abort);
  killProcess(number);
}

// Ordinary context, on the thread that threw.
void reportException(TrapState& trap, const void* calledFrom) {
  ArmedPlan* const armed = trap.armed.load();
  UncaughtException exception;
  if (!armed->plan.isAnyoneListening() || !describeUncaughtException(exception)) return;
  allowLongFiles();
  CrashRecorder& recorder = armed->exceptionRecorder;
  const CrashRecord record =
      recorder.record(armed->plan.exceptionTemplate, exception.name, exception.reason, calledFrom);
  CrashNotice notice = noticeOf(*armed, recorder, record);
  notice.isException = true;
  notice.name = exception.name;
  notice.reason = exception.reason;
  trap.reporter.tell(notice);
}

[[noreturn]] void onTerminate() {
  TrapState* const trap = trapInForce.load();
  if (trap == nullptr) std::abort();
  if (getpid() == trap->process.load()) {
    pid_t first = 0;
    if (trap->terminating.compare_exchange_strong(first, gettid())) {
      trap->watchdog.arm();
      reportException(*trap, __builtin_return_address(0));
      // What the host's own handler does may take its time.
      trap->watchdog.disarm();
    } else if (first == gettid()) {
      std::abort();  // the previous handler has this one as its own previous
    } else {
      waitForEnd();
    }
  }
  if (const std::terminate_handler previous = trap->previousTerminate.load()) previous();
  std::abort();
}

void catchTermination(TrapState& trap) {
  const std::terminate_handler previous = std::set_terminate(&onTerminate);
  if (previous != &onTerminate) trap.previousTerminate.store(previous);
}

// False when there is no memory for it; what was there before then stays.
bool replacePlan(TrapState& trap, CrashPlan plan) {
  if (ArmedPlan* const present = trap.armed.load(); present && present->serves(plan)) return true;
  auto armed = std::make_unique<ArmedPlan>(std::move(plan));
  if (!armed->isUsable()) return false;
  std::unique_ptr<ArmedPlan> old(trap.armed.exchange(armed.release()));
  const bool isSomebodyDying = trap.crashing.load() != 0 || trap.terminating.load() != 0;
  if (isSomebodyDying) static_cast<void>(old.release());
  return true;
}

}  // namespace

void LinuxCrashTrap::install(CrashPlan plan) {
  if (plan.isAnyoneListening == nullptr || !plan.tell) return;
  try {
    TrapState& trap = trapOfProcess();
    const std::lock_guard lock(trap.installing);
    if (plan.folder && !makePrivateFolder(*plan.folder) && belongsToOthers(*plan.folder)) {
      plan.folder.reset();
    }
    if (!replacePlan(trap, std::move(plan)) || !trap.reporter.start()) return;
    trap.process.store(getpid());
    trapInForce.store(&trap);
    catchTermination(trap);
    catchSignals(&onFatalSignal);
  } catch (const std::exception&) {
    // Out of memory: a process without crash capture is better than none.
  }
}

}  // namespace quorvance
