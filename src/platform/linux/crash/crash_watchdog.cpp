#include "platform/linux/crash/crash_watchdog.h"

#include <signal.h>

namespace quorvance {
namespace {

// Two for the report, which takes milliseconds, and the two that delegates may take.
constexpr time_t kMaxReportSeconds = 4;

}  // namespace

CrashWatchdog::CrashWatchdog() {
  struct sigevent event = {};
  event.sigev_notify = SIGEV_SIGNAL;
  event.sigev_signo = SIGKILL;
  isMade_ = timer_create(CLOCK_MONOTONIC, &event, &timer_) == 0;
}

CrashWatchdog::~CrashWatchdog() {
  if (isMade_) timer_delete(timer_);
}

void CrashWatchdog::arm() { setSeconds(kMaxReportSeconds); }

void CrashWatchdog::disarm() { setSeconds(0); }

void CrashWatchdog::setSeconds(time_t seconds) {
  struct itimerspec time = {};
  time.it_value.tv_sec = seconds;
  if (isMade_) timer_settime(timer_, 0, &time, nullptr);
}

}  // namespace quorvance
