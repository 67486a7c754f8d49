// Stands in for the allocator of the C library, of which operator new is made too.

#include "test/memory/failing_allocator.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <exception>
#include <utility>

namespace quorvance {
namespace {

// None has a constructor: allocations come before those run.
std::atomic<std::uint64_t> failureSeed{0};
std::atomic<std::uint64_t> failureOneIn{0};
std::atomic<std::uint64_t> allocationCount{0};
std::atomic<std::uint64_t> failureCount{0};
thread_local RunningCode::Owner owner = RunningCode::Owner::library;

// The bits of a number well mixed (the finalizer of SplitMix64).
std::uint64_t mixed(std::uint64_t number) {
  number = (number ^ (number >> 30U)) * 0xbf58476d1ce4e5b9U;
  number = (number ^ (number >> 27U)) * 0x94d049bb133111ebU;
  return number ^ (number >> 31U);
}

bool mustFail() {
  const std::uint64_t oneIn = failureOneIn.load(std::memory_order_relaxed);
  if (oneIn == 0 || owner == RunningCode::Owner::host || std::uncaught_exceptions() > 0)
    return false;
  if (mixed(failureSeed + ++allocationCount * 0x9e3779b97f4a7c15U) % oneIn != 0) return false;
  ++failureCount;
  errno = ENOMEM;
  return true;
}

}  // namespace

void startFailing(std::uint64_t seed, std::uint64_t oneIn) {
  failureSeed = mixed(seed);
  failureOneIn = oneIn;
}

std::uint64_t stopFailing() {
  failureOneIn = 0;
  return failureCount;
}

RunningCode::RunningCode(Owner now) : before_(std::exchange(owner, now)) {}
RunningCode::~RunningCode() { owner = before_; }

}  // namespace quorvance

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the C library's.
void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* memory, std::size_t bytes);
// NOLINTEND(bugprone-reserved-identifier)

void* malloc(std::size_t bytes) { return quorvance::mustFail() ? nullptr : __libc_malloc(bytes); }

void* calloc(std::size_t count, std::size_t bytes) {
  return quorvance::mustFail() ? nullptr : __libc_calloc(count, bytes);
}

void* realloc(void* memory, std::size_t bytes) {
  return quorvance::mustFail() ? nullptr : __libc_realloc(memory, bytes);
}

}  // extern "C"
