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
  if (isWatching.load(std::memory_order_relaxed) || isWatching.exchange(true)) return;
  // Without memory for it, whoever comes next tries again.
  if (pthread_atfork(nullptr, nullptr, &noteFork) != 0) isWatching.store(false);
}

bool isForkedChild() noexcept { return forkedChild.load(std::memory_order_relaxed); }

}  // namespace quorvance
