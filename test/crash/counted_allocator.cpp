// Stands in for the allocator of the C library and passes every call on to it.

#include <cstddef>
#include <cstdint>

#include "test/crash/allocator_count.h"

namespace {

thread_local std::uint64_t* callCount = nullptr;

void noteCall() {
  if (callCount != nullptr) ++*callCount;
}

}  // namespace

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier): the names are the C library's.
void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* memory, std::size_t bytes);
void __libc_free(void* memory);
// NOLINTEND(bugprone-reserved-identifier)

void* malloc(std::size_t bytes) {
  noteCall();
  return __libc_malloc(bytes);
}

void* calloc(std::size_t count, std::size_t bytes) {
  noteCall();
  return __libc_calloc(count, bytes);
}

void* realloc(void* memory, std::size_t bytes) {
  noteCall();
  return __libc_realloc(memory, bytes);
}

void free(void* memory) {
  noteCall();
  __libc_free(memory);
}

}  // extern "C"

namespace quorvance {

void countAllocatorCalls(CrashNotes& notes) { callCount = &notes.allocatorCalls; }

}  // namespace quorvance
