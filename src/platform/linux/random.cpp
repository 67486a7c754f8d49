#include "base/random.h"

#include <pthread.h>
#include <sys/mman.h>
#include <sys/random.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <optional>

#include "base/fatal.h"

namespace quorvance {
namespace {

void fillFromKernel(std::span<std::uint8_t> bytes) {
  std::size_t filled = 0;
  while (filled < bytes.size()) {
    const auto got = getrandom(bytes.data() + filled, bytes.size() - filled, 0);
    if (got > 0) {
      filled += static_cast<std::size_t>(got);
    } else if (errno != EINTR) {
      fatalError("the kernel gives no random bytes");
    }
  }
}

/// Bytes that a thread fetched beforehand: one question to the kernel serves for thirty
/// identifiers. They lie in a page that the kernel wipes in a forked child, however that was
/// forked, so that no two processes have the same ones. A byte that was given away is no longer
/// there. Of zeros when the page is new, and in a forked child.
struct FetchedBytes {
  std::size_t left;
  std::array<std::uint8_t, 512> bytes;

  void take(std::span<std::uint8_t> target);
};

void FetchedBytes::take(std::span<std::uint8_t> target) {
  if (left < target.size()) {
    fillFromKernel(bytes);
    left = bytes.size();
  }
  left -= target.size();
  const auto taken = std::span(bytes).subspan(left, target.size());
  std::copy(taken.begin(), taken.end(), target.begin());
  std::fill(taken.begin(), taken.end(), std::uint8_t{0});
}

void unmap(void* page) { munmap(page, sizeof(FetchedBytes)); }

/// Null where there is no memory for it, or no wiping.
void* mapWipedOnFork() {
  void* const page = mmap(nullptr, sizeof(FetchedBytes), PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (page == MAP_FAILED) return nullptr;
  // An emulator that takes any advice keeps none.
  constexpr int kNoAdvice = -1;
  if (madvise(page, sizeof(FetchedBytes), kNoAdvice) != 0 &&
      madvise(page, sizeof(FetchedBytes), MADV_WIPEONFORK) == 0) {
    return page;
  }
  unmap(page);
  return nullptr;
}

std::optional<pthread_key_t> makeKey() {
  pthread_key_t key = 0;
  if (pthread_key_create(&key, &unmap) != 0) return std::nullopt;
  return key;
}

// Made when the library is loaded: a fork finds nobody in the midst of it.
const std::optional<pthread_key_t> key = makeKey();

/// The calling thread's; null where it can have none. Not thread_local: a destructor of that kind
/// ends the process when there is no memory to note it.
FetchedBytes* fetchedBytes() {
  if (!key) return nullptr;
  void* page = pthread_getspecific(*key);
  if (page == nullptr) {
    page = mapWipedOnFork();
    if (page != nullptr && pthread_setspecific(*key, page) != 0) {
      unmap(page);
      page = nullptr;
    }
  }
  return static_cast<FetchedBytes*>(page);
}

}  // namespace

void fillWithRandomBytes(std::span<std::uint8_t> bytes) {
  FetchedBytes* const fetched = fetchedBytes();
  const bool isFetched = fetched != nullptr && bytes.size() <= fetched->bytes.size();
  isFetched ? fetched->take(bytes) : fillFromKernel(bytes);
}

}  // namespace quorvance
