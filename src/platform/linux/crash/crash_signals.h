#pragma once

#include <signal.h>

#include <array>
#include <cstddef>
#include <string_view>

namespace quorvance {

/// A fatal signal of this system.
struct CaughtSignal {
  std::string_view name;
  int number;
  /// It is no fault: a host that ignores it wants to live with it.
  bool staysIgnored;
  /// Runtimes of other languages raise it in their normal work.
  bool isUsedByRuntimes;
};

/// The order is that of the reported vocabulary; what that calls SIGEMT does not exist here.
inline constexpr std::array<CaughtSignal, 11> kCaughtSignals = {{
    {"SIGQUIT", SIGQUIT, true, false},
    {"SIGILL", SIGILL, false, true},
    {"SIGABRT", SIGABRT, false, false},
    {"SIGFPE", SIGFPE, false, true},
    {"SIGBUS", SIGBUS, false, true},
    {"SIGSEGV", SIGSEGV, false, true},
    {"SIGSYS", SIGSYS, false, false},
    {"SIGPIPE", SIGPIPE, true, false},
    {"SIGALRM", SIGALRM, true, false},
    {"SIGXCPU", SIGXCPU, true, false},
    {"SIGXFSZ", SIGXFSZ, true, false},
}};

using SignalHandler = void (*)(int number, siginfo_t* info, void* context);

/// Installs the handler for every signal of the table, on the alternate stack and with all signals
/// blocked; leaves alone those that have it already and those that stay ignored. Says in debug mode
/// which handlers of a runtime it replaces. Ordinary context.
void catchSignals(SignalHandler handler);

/// The instruction at which a signal was raised, from its handler's last argument; null where this
/// processor is not known. Async-signal-safe.
const void* faultingInstruction(const void* context);

/// Gives every signal of the table its default action, the one that the process dies of last, and
/// ends the process with SIGKILL. Async-signal-safe.
[[noreturn]] void killProcess(int number);

/// Lets the signal that is being handled do to this process what it does by default, once the
/// handler returns. Async-signal-safe.
void leaveToDefault(int number);

/// Waits for the end of the process, which another thread brings about.
[[noreturn]] void waitForEnd();

}  // namespace quorvance
