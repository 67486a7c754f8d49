#include "platform/linux/threads/signal_stack.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <utility>

namespace quorvance {
namespace {

constexpr std::size_t kStackBytes = 64UL * 1024;
// Runtimes of other languages and sanitizers bring stacks of this size, and depend on them.
constexpr std::size_t kEnoughStackBytes = 32UL * 1024;

std::size_t systemValue(int name, std::size_t atLeast) {
  return std::max(atLeast, static_cast<std::size_t>(std::max(sysconf(name), 0L)));
}

std::size_t pageBytes() { return systemValue(_SC_PAGESIZE, 4096); }

// What a handler needs grows with the processor's registers.
std::size_t stackBytes(std::size_t atLeast) { return systemValue(_SC_SIGSTKSZ, atLeast); }

bool isInUse(const stack_t& stack) { return (stack.ss_flags & SS_ONSTACK) != 0; }

bool isEnough(const stack_t& stack) {
  if (isInUse(stack)) return true;  // nothing can be changed now
  return (stack.ss_flags & SS_DISABLE) == 0 && stack.ss_size >= stackBytes(kEnoughStackBytes);
}

// Stands for a stack that the thread had already.
char stackOfOthers;

}  // namespace

void SignalStack::Unmap::operator()(SignalStack* stack) const noexcept {
  void* const mapping = stack->mapping_;
  const std::size_t bytes = stack->mappedBytes_;
  stack->~SignalStack();
  munmap(mapping, bytes);
}

// Not thread_local: registering a destructor there ends the process when memory is short, and the
// stack would be gone before the host's own thread-local objects are destroyed.
std::optional<pthread_key_t> SignalStack::keyOfThreads() noexcept {
  static const std::optional<pthread_key_t> key = [] {
    pthread_key_t made = 0;
    return pthread_key_create(&made, &onThreadEnd) == 0 ? std::optional(made) : std::nullopt;
  }();
  return key;
}

SignalStack::Owner SignalStack::make() noexcept {
  const std::size_t page = pageBytes();
  const std::size_t wanted = page + stackBytes(kStackBytes) + sizeof(SignalStack);
  const std::size_t bytes = (wanted + page - 1) / page * page;
  void* const mapping =
      mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0);
  if (mapping == MAP_FAILED) return nullptr;
  // Without the guard an overflow would be unnoticed, but the stack itself serves.
  static_cast<void>(mprotect(mapping, page, PROT_NONE));
  auto* const first = static_cast<std::byte*>(mapping);
  std::byte* const object = first + bytes - sizeof(SignalStack);
  stack_t stack = {};
  stack.ss_sp = first + page;
  stack.ss_size = static_cast<std::size_t>(object - first) - page;
  return Owner(new (object) SignalStack(mapping, bytes, stack));
}

void SignalStack::install(Owner stack) noexcept {
  const auto key = keyOfThreads();
  if (!key || sigaltstack(&stack->stack_, &stack->previous_) != 0) return;
  if (pthread_setspecific(*key, stack.get()) == 0) {
    static_cast<void>(stack.release());
  } else {
    sigaltstack(&stack->previous_, nullptr);
  }
}

void SignalStack::ensure() noexcept {
  const auto key = keyOfThreads();
  if (!key || pthread_getspecific(*key) != nullptr) return;
  stack_t present = {};
  if (sigaltstack(nullptr, &present) != 0 || isEnough(present)) {
    pthread_setspecific(*key, &stackOfOthers);
  } else if (Owner stack = make()) {
    install(std::move(stack));
  }
}

void SignalStack::onThreadEnd(void* remembered) {
  if (remembered == &stackOfOthers) return;
  Owner stack(static_cast<SignalStack*>(remembered));
  stack_t present = {};
  if (sigaltstack(nullptr, &present) != 0 || isInUse(present)) {
    static_cast<void>(stack.release());  // better lost than pulled from under a handler
    return;
  }
  // What the host has put in its place since is the host's.
  if (present.ss_sp == stack->stack_.ss_sp) sigaltstack(&stack->previous_, nullptr);
}

}  // namespace quorvance
