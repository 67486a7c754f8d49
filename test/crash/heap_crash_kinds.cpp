#include <malloc.h>

#include <cstddef>
#include <cstdlib>
#include <future>
#include <thread>

#include "test/crash/crash_kinds.h"

namespace quorvance {
namespace {

// Below the size from which memory is mapped, above the sizes that threads keep for themselves.
constexpr std::size_t kBlockBytes = 100'000;

// Through volatile pointers: what a compiler sees to be wrong it may leave out.
std::byte* volatile block = nullptr;

std::byte* newBlock() { return static_cast<std::byte*>(std::malloc(kBlockBytes)); }

// The allocator takes its locks only where there is a second thread.
void startSecondThread() {
  std::thread([] { std::promise<void>().get_future().wait(); }).detach();
}

// The size of all that is left of the heap, which stands behind the newest block, becomes absurd.
void abortInsideMalloc(CrashChildWorld& world) {
  world.receiveConfiguration(true);
  startSecondThread();
  block = newBlock();
  std::byte* volatile const end = block + malloc_usable_size(block);
  for (std::size_t i = 0; i < sizeof(std::size_t); ++i) end[i] = std::byte{0xFF};
  world.noteFault();
  block = newBlock();
}

void freeTwice(CrashChildWorld& world) {
  world.receiveConfiguration(true);
  startSecondThread();
  block = newBlock();
  std::free(block);
  world.noteFault();
  std::free(block);
}

// The links of a free block lead nowhere.
void corruptFreeList(CrashChildWorld& world) {
  world.receiveConfiguration(true);
  startSecondThread();
  block = newBlock();
  std::byte* volatile const guard = newBlock();
  std::free(block);
  for (std::size_t i = 0; i < 2 * sizeof(void*); ++i) block[i] = std::byte{0x41};
  world.noteFault();
  block = newBlock();
  block = newBlock();
  std::free(guard);
}

}  // namespace

const std::map<std::string, CrashKind>& heapCrashKinds() {
  static const std::map<std::string, CrashKind> kKinds = {
      {"abort_inside_malloc", abortInsideMalloc},
      {"double_free", freeTwice},
      {"corrupted_heap", corruptFreeList},
  };
  return kKinds;
}

}  // namespace quorvance
