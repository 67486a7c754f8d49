#include "platform/linux/crash/crash_signals.h"

#include <ucontext.h>
#include <unistd.h>

#include <string>

#include "base/debug.h"

namespace quorvance {
namespace {

bool isCaughtBy(const struct sigaction& action, SignalHandler handler) {
  return (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == handler;
}

bool isPlain(const struct sigaction& action, void (*disposition)(int)) {
  return (action.sa_flags & SA_SIGINFO) == 0 && action.sa_handler == disposition;
}

void catchSignal(const CaughtSignal& caught, SignalHandler handler) {
  struct sigaction present = {};
  if (sigaction(caught.number, nullptr, &present) != 0) return;
  if (isCaughtBy(present, handler)) return;
  if (caught.staysIgnored && isPlain(present, SIG_IGN)) return;
  if (caught.isUsedByRuntimes && !isPlain(present, SIG_DFL) && isInDebugMode()) {
    debugPrint("CrashEye: a handler of the host's for " + std::string(caught.name) +
               " is replaced; a runtime that raises it in normal work will be ended by it");
  }
  struct sigaction action = {};
  action.sa_sigaction = handler;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  sigfillset(&action.sa_mask);
  sigaction(caught.number, &action, nullptr);
}

void setDefault(int number) {
  struct sigaction action = {};
  action.sa_handler = SIG_DFL;
  sigaction(number, &action, nullptr);
}

}  // namespace

void catchSignals(SignalHandler handler) {
  for (const CaughtSignal& caught : kCaughtSignals) catchSignal(caught, handler);
}

const void* faultingInstruction(const void* context) {
  const auto* const state = static_cast<const ucontext_t*>(context);
#if defined(__x86_64__)
  // NOLINTNEXTLINE(performance-no-int-to-ptr): a register holds a number
  return reinterpret_cast<const void*>(state->uc_mcontext.gregs[REG_RIP]);
#elif defined(__aarch64__)
  // NOLINTNEXTLINE(performance-no-int-to-ptr): as above
  return reinterpret_cast<const void*>(state->uc_mcontext.pc);
#else
  static_cast<void>(state);
  return nullptr;
#endif
}

void killProcess(int number) {
  for (const CaughtSignal& caught : kCaughtSignals) {
    if (caught.number != number) setDefault(caught.number);
  }
  // Last: a further thread that dies of the same would end the process by it.
  setDefault(number);
  kill(getpid(), SIGKILL);
  waitForEnd();
}

void leaveToDefault(int number) {
  setDefault(number);
  // Blocked until the handler returns; a fault would come again by itself.
  raise(number);
}

void waitForEnd() {
  for (;;) pause();
}

}  // namespace quorvance
