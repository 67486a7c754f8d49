#include <dlfcn.h>
#include <malloc.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <stdexcept>

#include "test/child_programs.h"
#include "test/crash/crash_kinds.h"

namespace quorvance {
namespace {

// What a compiler sees to be wrong it may leave out: nothing here is known to it.
volatile int zero = 0;
volatile int hundred = 100;
volatile int sink = 0;
std::byte* volatile block = nullptr;

// Below the size from which memory is mapped, above the sizes that threads keep for themselves.
constexpr std::size_t kBlockBytes = 100'000;

void readTruncatedMapping() {
  const int file = memfd_create("truncated", MFD_CLOEXEC);
  constexpr std::size_t kBytes = 4096;
  if (ftruncate(file, kBytes) != 0) return;
  void* const memory = mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  if (memory == MAP_FAILED || ftruncate(file, 0) != 0) return;
  sink = *static_cast<volatile int*>(memory);
}

// NOLINTNEXTLINE(misc-no-recursion): its purpose
int recurse(int depth) {
  std::array<char, 1024> frame{};
  volatile char* const bytes = frame.data();
  bytes[static_cast<std::size_t>(depth) % frame.size()] = 1;
  if (depth == zero - 1) return 0;
  return recurse(depth + 1) + bytes[0];
}

class OutOfMoney : public std::runtime_error {
 public:
  OutOfMoney() : std::runtime_error("no \"money\" left\n") {}
};

void throwOutOfMoney() { throw OutOfMoney(); }

void promiseNotToThrow() noexcept { throwOutOfMoney(); }

void throwThroughNoexcept() {
  try {
    promiseNotToThrow();
  } catch (const std::exception&) {
    std::_Exit(EXIT_FAILURE);
  }
}

void writeToClosedPipe() {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return;
  close(ends[0]);
  if (write(ends[1], "x", 1) < 0) sayLine("write failed");
}

// The host writes more than it may; the report must not be cut at the same limit.
void exceedFileSize() {
  const rlimit tiny = {16, RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &tiny);
  const int file = memfd_create("log", MFD_CLOEXEC);
  constexpr std::array<char, 64> kBytes{};
  for (int i = 0; i < 2; ++i) sink = static_cast<int>(write(file, kBytes.data(), kBytes.size()));
}

std::byte* newBlock() { return static_cast<std::byte*>(std::malloc(kBlockBytes)); }

// The size of all that is left of the heap, which stands behind the newest block, becomes absurd.
void abortInsideMalloc() {
  block = newBlock();
  std::byte* volatile const end = block + malloc_usable_size(block);
  for (std::size_t i = 0; i < sizeof(std::size_t); ++i) end[i] = std::byte{0xFF};
  block = newBlock();
}

void freeTwice() {
  block = newBlock();
  std::free(block);
  std::free(block);  // NOLINT(clang-analyzer-unix.Malloc): its purpose
}

}  // namespace

const std::map<std::string, Death>& deaths() {
  static const std::map<std::string, Death> kDeaths = {
      {"null_write", writeToNothing},
      {"abort", [] { std::abort(); }},
      {"division_by_zero", [] { sink = hundred / zero; }},
      {"illegal_instruction", [] { __builtin_trap(); }},
      {"truncated_mapping", readTruncatedMapping},
      {"stack_overflow", [] { sink = recurse(0); }},
      {"fault_inside_dlopen", [] { dlopen(kFaultyModule, RTLD_NOW); }},
      {"exception", throwOutOfMoney},
      {"exception_through_noexcept", throwThroughNoexcept},
      // As a call of a pure virtual function ends.
      {"terminate", [] { std::terminate(); }},
      {"broken_pipe", writeToClosedPipe},
      {"file_size_exceeded", exceedFileSize},
      {"abort_inside_malloc", abortInsideMalloc},
      {"double_free", freeTwice},
  };
  return kDeaths;
}

}  // namespace quorvance
