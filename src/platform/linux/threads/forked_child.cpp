#include "base/forked_child.h"

#include <pthread.h>

#include <atomic>

namespace quorvance {
namespace {

std::atomic<bool> forkedChild{false};
std::atomic<bool> isWatching{false};

void noteFork() { forkedChild.store(true); }

}  // namespace

void watchForForks() noexcept {
  if (!isWatching.exchange(true)) pthread_atfork(nullptr, nullptr, &noteFork);
}

bool isForkedChild() noexcept { return forkedChild.load(std::memory_order_relaxed); }

}  // namespace quorvance
