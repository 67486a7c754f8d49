#include "platform/linux/threads/work_queue.h"

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <future>
#include <mutex>
#include <new>
#include <numeric>
#include <utility>

#include "base/forked_child.h"
#include "platform/linux/threads/process_exit.h"

namespace quorvance {
namespace {

constexpr std::size_t kMaxRunningCompletions = 2;
constexpr std::size_t kMaxRunningInOrder = 1;
static_assert(kMaxRunningCompletions + 2 * kMaxRunningInOrder == WorkQueue::kMaxThreads,
              "a task that its lane admits must find a thread");

bool isCurrentThread(const LibraryThread& thread) { return thread.isCurrent(); }

}  // namespace

struct WorkQueue::State : ExitParticipant {
  struct NumberedTask {
    std::uint64_t number = 0;
    Task task;
  };

  /// One lane: what waits, and how much of it may run at a time.
  struct Lane {
    const std::size_t limit;
    std::size_t running = 0;
    std::deque<NumberedTask> waiting = {};
    // Begins with nothing more.
    bool isHeld = false;

    std::size_t admissible() const {
      return isHeld ? 0 : std::min(waiting.size(), limit - running);
    }
  };

  explicit State(std::chrono::milliseconds time) : idleTime(time) {}

  const std::chrono::milliseconds idleTime;
  std::mutex mutex;
  std::condition_variable changed;
  // In the order of WorkLane.
  std::array<Lane, 3> lanes = {Lane{kMaxRunningCompletions}, Lane{kMaxRunningInOrder},
                               Lane{kMaxRunningInOrder}};
  std::uint64_t nextNumber = 0;
  std::array<bool, kMaxThreads> isThreadAlive = {};
  bool isStopped = false;
  bool isWatchingExit = false;

  Lane& at(WorkLane lane) { return lanes[static_cast<std::size_t>(lane)]; }
  std::size_t admissible() const {
    return std::accumulate(
        lanes.begin(), lanes.end(), std::size_t{0},
        [](std::size_t sum, const Lane& lane) { return sum + lane.admissible(); });
  }
  /// Threads that are about to look for a task.
  std::size_t freeThreads() const {
    auto count =
        static_cast<std::size_t>(std::count(isThreadAlive.begin(), isThreadAlive.end(), true));
    for (const Lane& lane : lanes) count -= lane.running;
    return count;
  }
  /// The lane with the oldest task that may run now; null when there is none.
  Lane* nextLane() {
    Lane* next = nullptr;
    for (Lane& lane : lanes) {
      if (lane.admissible() == 0) continue;
      if (next == nullptr || lane.waiting.front().number < next->waiting.front().number) {
        next = &lane;
      }
    }
    return next;
  }
  void runNext(Lane& lane, std::unique_lock<std::mutex>& lock);
  void stop();
  bool drain(WorkLane lane, std::chrono::steady_clock::time_point deadline);
  void beginExit() noexcept override;
  void awaitExit(std::chrono::steady_clock::time_point deadline) noexcept override;
};

/// Drops what waits, outside of the lock.
void WorkQueue::State::stop() {
  std::array<std::deque<NumberedTask>, 3> dropped;
  const std::lock_guard lock(mutex);
  isStopped = true;
  for (std::size_t i = 0; i < dropped.size(); ++i) dropped[i].swap(lanes[i].waiting);
  changed.notify_all();
}

// A task behind the others tells that they have ended. It needs no further thread: whoever runs
// them takes it next.
bool WorkQueue::State::drain(WorkLane lane, std::chrono::steady_clock::time_point deadline) {
  const auto ended = std::make_shared<std::promise<void>>();
  {
    const std::lock_guard lock(mutex);
    Lane& drained = at(lane);
    if (isStopped || (drained.running == 0 && drained.waiting.empty())) return true;
    drained.waiting.push_back({nextNumber++, [ended] { ended->set_value(); }});
    changed.notify_one();
  }
  return ended->get_future().wait_until(deadline) == std::future_status::ready;
}

void WorkQueue::State::beginExit() noexcept {
  const std::lock_guard lock(mutex);
  // A host's completion may use what its destructors are taking down.
  at(WorkLane::completions).isHeld = true;
  at(WorkLane::facts).isHeld = true;
}

void WorkQueue::State::awaitExit(std::chrono::steady_clock::time_point deadline) noexcept {
  try {
    static_cast<void>(drain(WorkLane::files, deadline));
  } catch (const std::bad_alloc&) {
    // Without memory there is nothing to wait with.
  }
}

void WorkQueue::State::runNext(Lane& lane, std::unique_lock<std::mutex>& lock) {
  Task task = std::move(lane.waiting.front().task);
  lane.waiting.pop_front();
  ++lane.running;
  lock.unlock();
  task();
  task = nullptr;  // what it holds may call back into the queue
  lock.lock();
  --lane.running;
}

WorkQueue::WorkQueue(std::chrono::milliseconds idleTime)
    : state_(std::make_shared<State>(idleTime)) {}

WorkQueue::~WorkQueue() {
  if (leakInForkedChild(state_)) return;
  state_->stop();
  const bool isOwnThread = std::any_of(threads_.begin(), threads_.end(), isCurrentThread);
  for (LibraryThread& thread : threads_) isOwnThread ? thread.detach() : thread.finish();
}

void WorkQueue::post(WorkLane lane, Task task) {
  if (!task) return;
  const std::lock_guard lock(state_->mutex);
  if (state_->isStopped) return;
  if (!state_->isWatchingExit) state_->isWatchingExit = joinProcessExit(state_);
  state_->at(lane).waiting.push_back({state_->nextNumber++, std::move(task)});
  if (state_->admissible() > state_->freeThreads()) {
    startThread();
  } else {
    state_->changed.notify_one();
  }
}

bool WorkQueue::drain(WorkLane lane, std::chrono::steady_clock::time_point deadline) {
  return state_->drain(lane, deadline);
}

// Under the mutex.
void WorkQueue::startThread() {
  auto& alive = state_->isThreadAlive;
  const auto slot = static_cast<std::size_t>(
      std::distance(alive.begin(), std::find(alive.begin(), alive.end(), false)));
  if (slot == alive.size()) return;
  threads_[slot].detach();  // one that ended idle may still be busy with what the host left on it
  alive[slot] = threads_[slot].start("qv-work", [state = state_, slot] { run(*state, slot); });
}

void WorkQueue::run(State& state, std::size_t slot) {
  std::unique_lock lock(state.mutex);
  while (!state.isStopped) {
    if (State::Lane* const lane = state.nextLane()) {
      state.runNext(*lane, lock);
      continue;
    }
    const bool isWoken = state.changed.wait_for(
        lock, state.idleTime, [&] { return state.isStopped || state.nextLane() != nullptr; });
    if (!isWoken) break;
  }
  state.isThreadAlive[slot] = false;
}

}  // namespace quorvance
