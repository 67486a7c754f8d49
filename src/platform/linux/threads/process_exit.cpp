#include "platform/linux/threads/process_exit.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

#include "base/debug.h"
#include "base/forked_child.h"

namespace quorvance {
namespace {

using Clock = std::chrono::steady_clock;

std::atomic<bool> hasBegun{false};

struct ExitState {
  std::mutex mutex;
  // Does not change any more once the end has begun.
  std::vector<std::weak_ptr<ExitParticipant>> participants;
  // Held by the handler that runs; guards what is left of kMaxExitDelay.
  std::mutex handling;
  Clock::duration delayLeft = kMaxExitDelay;

  void begin() {
    const std::lock_guard lock(mutex);
    hasBegun = true;
  }
  void await() {
    const Clock::time_point start = Clock::now();
    const Clock::time_point deadline = start + delayLeft;
    for (const auto& participant : participants) {
      if (Clock::now() >= deadline) break;
      if (const auto held = participant.lock()) held->awaitExit(deadline);
    }
    flushDebugOutput(deadline);
    delayLeft -= std::min(delayLeft, Clock::now() - start);
  }
};

// Never destroyed: threads of the library may outlive every static destructor.
ExitState& exitState() noexcept {
  alignas(ExitState) static std::byte memory[sizeof(ExitState)];
  static auto* const state = [] {
    watchForForks();
    // The earliest handler is the one that runs last: after what the host does at its end.
    registerExitHandler();
    return new (memory) ExitState();
  }();
  return *state;
}

}  // namespace

bool joinProcessExit(std::weak_ptr<ExitParticipant> participant) noexcept {
  ExitState& state = exitState();
  const std::lock_guard lock(state.mutex);
  if (hasBegun) return false;
  std::erase_if(state.participants, [](const auto& known) { return known.expired(); });
  try {
    state.participants.push_back(std::move(participant));
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

void registerExitHandler() noexcept {
  // Refused for want of memory: the process then ends without the library's care.
  static_cast<void>(std::atexit(&handleProcessExit));
}

void handleProcessExit() noexcept {
  if (isForkedChild()) return;
  ExitState& state = exitState();
  const std::lock_guard lock(state.handling);
  state.begin();
  for (const auto& participant : state.participants) {
    if (const auto held = participant.lock()) held->beginExit();
  }
  state.await();
}

bool hasProcessExitBegun() noexcept { return hasBegun; }

}  // namespace quorvance
