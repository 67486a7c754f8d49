#pragma once

#include <pthread.h>
#include <signal.h>

#include <cstddef>
#include <memory>
#include <optional>

namespace quorvance {

/// An alternate signal stack of at least 64 KiB with a guard page below. The memory comes from the
/// kernel and holds the object too: the heap, which may be exhausted, is not needed.
///
/// Life: made on any thread, which is where its absence is noticed; installed on one thread, which
/// has it to its very end, past the destructors of the host's thread-local objects; unmapped there.
class alignas(64) SignalStack {
 public:
  struct Unmap {
    void operator()(SignalStack* stack) const noexcept;
  };
  using Owner = std::unique_ptr<SignalStack, Unmap>;

  /// Null when there is no memory.
  static Owner make() noexcept;
  /// Gives the stack to the calling thread, which has none of these.
  static void install(Owner stack) noexcept;
  /// Gives the calling thread one unless it has one that is large enough; looks once a thread.
  static void ensure() noexcept;

  SignalStack(const SignalStack&) = delete;
  SignalStack& operator=(const SignalStack&) = delete;

 private:
  SignalStack(void* mapping, std::size_t mappedBytes, const stack_t& stack) noexcept
      : mapping_(mapping), mappedBytes_(mappedBytes), stack_(stack) {}
  static std::optional<pthread_key_t> keyOfThreads() noexcept;
  static void onThreadEnd(void* remembered);

  void* const mapping_;
  const std::size_t mappedBytes_;
  const stack_t stack_;
  // Put back at the end: a sanitizer has a stack of its own there and frees it later.
  stack_t previous_ = {};
};

}  // namespace quorvance
