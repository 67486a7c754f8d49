#include "quorvance/alternate_stack.h"

#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>

namespace quorvance {
namespace {

constexpr std::size_t kSignalStackBytes = 64UL * 1024;
// Runtimes of other languages and sanitizers bring stacks of this size, and depend on them.
constexpr std::size_t kEnoughSignalStackBytes = 32UL * 1024;

std::size_t systemValue(int name, std::size_t atLeast) {
  return std::max(atLeast, static_cast<std::size_t>(std::max(sysconf(name), 0L)));
}

std::size_t signalStackBytes(std::size_t atLeast) {
  const std::size_t page = systemValue(_SC_PAGESIZE, 4096);
  const std::size_t bytes = systemValue(_SC_SIGSTKSZ, atLeast);  // grows with the registers
  return (bytes + page - 1) / page * page;
}

/// The alternate stack of one host thread: made on that thread, ends with it.
class HostThreadStack {
 public:
  HostThreadStack() {
    if (sigaltstack(nullptr, &previous_) != 0 || isEnough(previous_)) return;
    const std::size_t guard = systemValue(_SC_PAGESIZE, 4096);
    const std::size_t usable = signalStackBytes(kSignalStackBytes);
    void* const memory = mmap(nullptr, guard + usable, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
    if (memory == MAP_FAILED) return;
    // Without the guard the stack itself still serves.
    static_cast<void>(mprotect(memory, guard, PROT_NONE));
    memory_ = memory;
    allBytes_ = guard + usable;
    stack_.ss_sp = static_cast<std::byte*>(memory) + guard;
    stack_.ss_size = usable;
    if (sigaltstack(&stack_, nullptr) != 0) release();
  }
  ~HostThreadStack() {
    if (memory_ == nullptr) return;
    stack_t current = {};
    if (sigaltstack(nullptr, &current) != 0 || (current.ss_flags & SS_ONSTACK) != 0) return;
    // What the host has put in its place since is the host's.
    if (current.ss_sp == stack_.ss_sp) sigaltstack(&previous_, nullptr);
    release();
  }
  HostThreadStack(const HostThreadStack&) = delete;
  HostThreadStack& operator=(const HostThreadStack&) = delete;

 private:
  static bool isEnough(const stack_t& stack) {
    if ((stack.ss_flags & SS_ONSTACK) != 0) return true;  // in use: nothing can be changed
    return (stack.ss_flags & SS_DISABLE) == 0 &&
           stack.ss_size >= signalStackBytes(kEnoughSignalStackBytes);
  }
  void release() {
    munmap(memory_, allBytes_);
    memory_ = nullptr;
  }

  void* memory_ = nullptr;
  std::size_t allBytes_ = 0;
  stack_t stack_ = {};
  stack_t previous_ = {};
};

// Apart from the object: the test of every call is then one load.
thread_local bool hasLookedAtStack = false;

}  // namespace

void ensureAlternateStack() noexcept {
  if (hasLookedAtStack) return;
  hasLookedAtStack = true;
  thread_local const HostThreadStack stack;
}

}  // namespace quorvance
