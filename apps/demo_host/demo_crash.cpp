#include "apps/demo_host/demo_crash.h"

#include <signal.h>
#include <sys/mman.h>

#include <cstdlib>
#include <stdexcept>
#include <thread>

namespace demo_host {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLookAtCaptureAgainAfter{20};

// Memory that is there and may not be touched, a fault in every build: what a compiler sees to be
// wrong it may leave out, and a sanitizer stops at null by itself.
void writeWhereNobodyMay() {
  void* const page = mmap(nullptr, 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (page != MAP_FAILED) *static_cast<volatile char*>(page) = 1;
}

void (*presentHandler())(int) {
  struct sigaction present = {};
  sigaction(SIGSEGV, nullptr, &present);
  return present.sa_handler;
}

}  // namespace

CrashCapture::CrashCapture() : handlerBefore_(presentHandler()) {}

bool CrashCapture::isOn() const { return presentHandler() != handlerBefore_; }

// The library has no signal for this, so it is looked at again and again.
bool CrashCapture::waitUntilOn() const {
  const auto deadline = SteadyClock::now() + kCrashCaptureTime;
  while (!isOn() && SteadyClock::now() < deadline)
    std::this_thread::sleep_for(kLookAtCaptureAgainAfter);
  return isOn();
}

void crashOnPurpose(CrashKind kind) {
  std::thread([kind] {
    if (kind == CrashKind::segv) writeWhereNobodyMay();
    if (kind == CrashKind::exception) throw std::runtime_error("the demo was told to crash");
    std::abort();
  }).join();
  std::abort();
}

}  // namespace demo_host
