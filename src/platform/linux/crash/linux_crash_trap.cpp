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
struct CrashGear {
  explicit CrashGear(CrashPlan newPlan)
      : plan(std::move(newPlan)), signalRecorder(plan), exceptionRecorder(plan) {}

  bool isUsable() const { return signalRecorder.isUsable() && exceptionRecorder.isUsable(); }

  /// `tell` cannot be compared; equal bytes come of the same facts.
  bool serves(const CrashPlan& other) const {
    return plan.signals == other.signals && plan.exceptionForm == other.exceptionForm &&
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
/// take the gear; whoever replaces the gear looks afterwards whether somebody is dying and then
/// lets the old one be.
struct TrapState {
  std::mutex installing;
  std::atomic<pid_t> process{0};
  std::atomic<pid_t> crashing{0};
  std::atomic<pid_t> terminating{0};
  std::atomic<CrashGear*> gear{nullptr};
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

CrashNews newsOf(const CrashGear& gear, const CrashRecorder& recorder, CrashRecord record) {
  CrashNews news;
  news.tell = &gear.plan.tell;
  news.isStored = record != CrashRecord::failed;
  news.callStack = recorder.callStack();
  return news;
}

void reportSignal(TrapState& trap, int number, const void* struckAt) {
  CrashGear* const gear = trap.gear.load();
  const SignalPlan* const plan = gear->planOf(number);
  if (plan == nullptr || !gear->plan.isAnyoneListening()) return;
  CrashRecorder& recorder = gear->signalRecorder;
  const CrashRecord record = recorder.record(plan->form, plan->name, plan->reason, struckAt);
  CrashNews news = newsOf(*gear, recorder, record);
  news.name = plan->name;
  news.reason = plan->reason;
  trap.reporter.tell(news);
  const pid_t terminating = trap.terminating.load();
  if (terminating != 0 && terminating != gettid()) gear->exceptionRecorder.removeTemporaries();
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
  reportSignal(*trap, number, struckInstruction(context));
  std::set_terminate(&std::abort);
  killProcess();
}

// Ordinary context, on the thread that threw.
void reportException(TrapState& trap, const void* calledFrom) {
  CrashGear* const gear = trap.gear.load();
  UncaughtException exception;
  if (!gear->plan.isAnyoneListening() || !describeUncaughtException(exception)) return;
  allowLongFiles();
  CrashRecorder& recorder = gear->exceptionRecorder;
  const CrashRecord record =
      recorder.record(gear->plan.exceptionForm, exception.name, exception.reason, calledFrom);
  CrashNews news = newsOf(*gear, recorder, record);
  news.isException = true;
  news.name = exception.name;
  news.reason = exception.reason;
  trap.reporter.tell(news);
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
bool takeUp(TrapState& trap, CrashPlan plan) {
  if (CrashGear* const present = trap.gear.load(); present && present->serves(plan)) return true;
  auto gear = std::make_unique<CrashGear>(std::move(plan));
  if (!gear->isUsable()) return false;
  std::unique_ptr<CrashGear> old(trap.gear.exchange(gear.release()));
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
    if (plan.folder) makePrivateFolder(*plan.folder);
    if (!takeUp(trap, std::move(plan)) || !trap.reporter.start()) return;
    trap.process.store(getpid());
    trapInForce.store(&trap);
    catchTermination(trap);
    catchSignals(&onFatalSignal);
  } catch (const std::exception&) {
    // Out of memory: a process without crash capture is better than none.
  }
}

}  // namespace quorvance
