#include "platform/linux/crash/crash_reporter.h"

#include <linux/futex.h>
#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <climits>
#include <string>

#include "platform/linux/threads/library_thread.h"

namespace quorvance {
namespace {

constexpr std::uint32_t kParked = 0;
constexpr std::uint32_t kAsking = 1;
constexpr std::uint32_t kAsked = 2;
constexpr time_t kMaxTellingSeconds = 2;
constexpr std::size_t kReservedTextBytes = 16UL * 1024;

// The kernel's own wait on an atomic: it needs no lock, no memory and no descriptor.
static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t) &&
              std::atomic<std::uint32_t>::is_always_lock_free);

// Until the word may have changed, the deadline has passed or a signal came; absent: no deadline.
void waitWhile(std::atomic<std::uint32_t>& word, std::uint32_t value, const timespec* deadline) {
  syscall(SYS_futex, &word, FUTEX_WAIT_BITSET_PRIVATE, value, deadline, nullptr,
          FUTEX_BITSET_MATCH_ANY);
}

void wakeAll(std::atomic<std::uint32_t>& word) {
  syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
}

timespec monotonicNow() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now;
}

bool isBefore(const timespec& a, const timespec& b) {
  return a.tv_sec < b.tv_sec || (a.tv_sec == b.tv_sec && a.tv_nsec < b.tv_nsec);
}

void blockAllSignals() {
  sigset_t all;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, nullptr);
}

void tellOf(const CrashNotice& notice, CaughtCrash& crash) {
  crash.isException = notice.isException;
  crash.isStored = notice.isStored;
  crash.name = notice.name;
  crash.reason = notice.reason;
  crash.callStack = notice.callStack;
  (*notice.tell)(crash);
}

}  // namespace

bool CrashReporter::start() {
  if (isStarted_) return true;
  LibraryThread thread;
  isStarted_ = thread.start("qv-crash", [this] { run(); });
  thread.detach();
  return isStarted_;
}

void CrashReporter::run() {
  blockAllSignals();
  // Memory taken now comes from a part of the heap that is this thread's: the dying thread may
  // hold the lock of its own.
  CaughtCrash crash;
  crash.reason.reserve(kReservedTextBytes);
  crash.callStack.reserve(kReservedTextBytes);
  for (;;) {
    for (auto phase = phase_.load(); phase != kAsked; phase = phase_.load()) {
      waitWhile(phase_, phase, nullptr);
    }
    try {
      tellOf(notice_, crash);
    } catch (...) {
      // A delegate's failure must not become another crash.
    }
    phase_.store(kParked);
    wakeAll(phase_);
  }
}

void CrashReporter::tell(const CrashNotice& notice) {
  std::uint32_t phase = kParked;
  if (!phase_.compare_exchange_strong(phase, kAsking)) return;
  timespec deadline = monotonicNow();
  deadline.tv_sec += kMaxTellingSeconds;
  notice_ = notice;
  phase_.store(kAsked);
  wakeAll(phase_);
  while (phase_.load() == kAsked && isBefore(monotonicNow(), deadline)) {
    waitWhile(phase_, kAsked, &deadline);
  }
}

}  // namespace quorvance
