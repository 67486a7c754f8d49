#include "platform/linux/threads/library_thread.h"

#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <memory>
#include <utility>

#include "platform/linux/threads/process_exit.h"

namespace quorvance {
namespace {

constexpr std::size_t kMinAlternateStackBytes = 64 * 1024;

// What a fault of the thread itself raises; a blocked one would kill without any handler.
constexpr int kFaultSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGSYS, SIGTRAP};

std::size_t pageBytes() { return static_cast<std::size_t>(std::max(sysconf(_SC_PAGESIZE), 4096L)); }

std::size_t alternateStackBytes() {
  const long wanted = sysconf(_SC_SIGSTKSZ);  // depends on the processor's register state
  const std::size_t bytes =
      std::max(kMinAlternateStackBytes, static_cast<std::size_t>(std::max(wanted, 0L)));
  const std::size_t page = pageBytes();
  return (bytes + page - 1) / page * page;
}

/// Memory for signal handlers with a guard page below; mapped by the starting thread, so that its
/// absence is known before the thread exists.
class AlternateStack {
 public:
  AlternateStack() : usableBytes_(alternateStackBytes()) {
    void* const memory = mmap(nullptr, allBytes(), PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED) return;
    memory_ = static_cast<std::byte*>(memory);
    // Without the guard an overflow would be unnoticed, but the stack itself serves.
    static_cast<void>(mprotect(memory_, pageBytes(), PROT_NONE));
  }
  ~AlternateStack() {
    if (isInstalled_) sigaltstack(&previous_, nullptr);
    if (memory_ != nullptr) munmap(memory_, allBytes());
  }
  AlternateStack(const AlternateStack&) = delete;
  AlternateStack& operator=(const AlternateStack&) = delete;

  bool isMapped() const { return memory_ != nullptr; }

  /// For the calling thread, which must also destroy the object.
  void install() {
    stack_t stack = {};
    stack.ss_sp = memory_ + pageBytes();
    stack.ss_size = usableBytes_;
    isInstalled_ = sigaltstack(&stack, &previous_) == 0;
  }

 private:
  std::size_t allBytes() const { return usableBytes_ + pageBytes(); }

  std::size_t usableBytes_;
  std::byte* memory_ = nullptr;
  bool isInstalled_ = false;
  // Put back at the end: a sanitizer has a stack of its own there and frees it later.
  stack_t previous_ = {};
};

sigset_t asynchronousSignals() {
  sigset_t signals;
  sigfillset(&signals);
  for (const int fault : kFaultSignals) sigdelset(&signals, fault);
  return signals;
}

/// The calling thread's signal mask, replaced while the object lives: a new thread inherits it.
class SignalMask {
 public:
  explicit SignalMask(const sigset_t& mask) { pthread_sigmask(SIG_SETMASK, &mask, &previous_); }
  ~SignalMask() { pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }
  SignalMask(const SignalMask&) = delete;
  SignalMask& operator=(const SignalMask&) = delete;

 private:
  sigset_t previous_;
};

}  // namespace

LibraryThread::~LibraryThread() { finish(); }

bool LibraryThread::start(const char* name, std::function<void()> body) {
  const SignalMask mask(asynchronousSignals());
  auto stack = std::make_unique<AlternateStack>();
  if (!stack->isMapped()) return false;
  try {
    thread_ = std::thread([name, stack = std::move(stack), body = std::move(body)]() mutable {
      pthread_setname_np(pthread_self(), name);
      const std::unique_ptr<AlternateStack> owned = std::move(stack);
      owned->install();
      const std::function<void()> run = std::move(body);
      run();
    });
  } catch (const std::exception&) {
    return false;
  }
  process_ = getpid();
  return true;
}

bool LibraryThread::isStarted() const { return thread_.joinable(); }

bool LibraryThread::isCurrent() const { return thread_.get_id() == std::this_thread::get_id(); }

void LibraryThread::finish() {
  if (!thread_.joinable()) return;
  // Joining a thread of the parent process is undefined, whatever this C library does; at the end
  // of the process a thread may have come to rest for ever.
  if (isCurrent() || process_ != getpid() || hasProcessExitBegun()) {
    letGo();
  } else {
    thread_.join();
  }
}

void LibraryThread::letGo() {
  if (thread_.joinable()) thread_.detach();
}

}  // namespace quorvance
