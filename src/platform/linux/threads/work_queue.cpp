#include "platform/linux/threads/work_queue.h"

#include <algorithm>
#include <array>
#include <condition_variable>
#include <cstdint>
#include <future>
#include <list>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "base/forked_child.h"
#include "base/out_of_memory.h"
#include "platform/linux/threads/idle_threads.h"
#include "platform/linux/threads/library_thread.h"
#include "platform/linux/threads/process_exit.h"

namespace quorvance {
namespace {

constexpr std::size_t kMaxRunningCompletions = 2;
constexpr std::size_t kMaxRunningInOrder = 1;
static_assert(kMaxRunningCompletions + 3 * kMaxRunningInOrder == WorkQueue::kMaxThreads,
              "a task that its lane admits must find a thread");
static_assert(WorkLane::completions == WorkLane{0} && WorkLane::files == WorkLane{1} &&
                  WorkLane::facts == WorkLane{2} && WorkLane::images == WorkLane{3},
              "lanes are kept in this order");

}  // namespace

/// Shared by the queue and its threads.
class WorkQueue::State : public ThreadSeeker,
                         public ExitParticipant,
                         public WakeUps,
                         public std::enable_shared_from_this<State> {
 public:
  State(std::chrono::milliseconds idleTime, std::shared_ptr<ThreadRetries> retries)
      : idleTime_(idleTime), retries_(std::move(retries)) {}

  void post(WorkLane lane, Task task) noexcept;
  std::shared_ptr<PreparedTask> prepare(WorkLane lane, PreparedTask::Body body) noexcept;
  /// Drops what waits, save for files, and waits for what runs, save for files and on one of the
  /// threads.
  void end() noexcept;
  void seekThread() noexcept override;
  void hold() noexcept override;
  void release() noexcept override;
  bool drain(WorkLane lane, std::chrono::steady_clock::time_point deadline);
  void beginExit() noexcept override;
  void awaitExit(std::chrono::steady_clock::time_point deadline) noexcept override;

 private:
  class Prepared;

  /// What waits: a task, or in its stead something that is prepared and shared.
  struct Item {
    Task task = nullptr;
    std::shared_ptr<Prepared> prepared = nullptr;
    PreparedTask::Owner owner = nullptr;
    std::uint64_t number = 0;
  };
  /// One item in a node of its own, made beforehand: adding it needs no memory.
  using Node = std::list<Item>;

  /// What waits in one lane, and how much of it may run at a time.
  struct Lane {
    const std::size_t limit;
    std::size_t running = 0;
    std::list<Item> waiting = {};
    // Begins with nothing more.
    bool isHeld = false;

    std::size_t admissible() const {
      return isHeld ? 0 : std::min(waiting.size(), limit - running);
    }
  };

  void stop() noexcept;
  void keepFiles(std::list<Item>& dropped) noexcept;
  bool isLate() const { return isStopped_ && std::chrono::steady_clock::now() >= filesEnd_; }
  void add(WorkLane lane, Node& node, std::unique_lock<std::mutex>& lock) noexcept;
  bool bringThread(std::unique_lock<std::mutex>& lock) noexcept;
  std::size_t admissible() const;
  std::size_t freeThreads() const;
  bool wantsThread() const { return admissible() > freeThreads(); }
  bool startThread() noexcept;
  void run(std::size_t slot);
  Lane& at(WorkLane lane) { return lanes_[static_cast<std::size_t>(lane)]; }
  Lane* nextLane();
  void runNext(Lane& lane, std::unique_lock<std::mutex>& lock);

  const std::chrono::milliseconds idleTime_;
  const std::shared_ptr<ThreadRetries> retries_;
  std::mutex mutex_;
  std::condition_variable changed_;
  // In the order of WorkLane.
  std::array<Lane, 4> lanes_ = {Lane{kMaxRunningCompletions}, Lane{kMaxRunningInOrder},
                                Lane{kMaxRunningInOrder}, Lane{kMaxRunningInOrder}};
  std::uint64_t nextNumber_ = 0;
  std::array<LibraryThread, kMaxThreads> threads_;
  std::array<bool, kMaxThreads> isThreadAlive_ = {};
  IdleThreads<kMaxThreads> idle_;
  // Whose posts wake nobody.
  std::optional<std::thread::id> holder_;
  bool isStopped_ = false;
  // Once stopped: when the file lane begins with nothing more.
  std::chrono::steady_clock::time_point filesEnd_;
  bool isWatchingExit_ = false;
};

/// Has its node while it does not wait.
class WorkQueue::State::Prepared : public PreparedTask,
                                   public std::enable_shared_from_this<Prepared> {
 public:
  Prepared(std::shared_ptr<State> state, WorkLane lane, Body body)
      : state_(std::move(state)), lane_(lane), body_(std::move(body)), node_(1) {}

  void start(Owner owner, std::chrono::milliseconds /*delay*/) noexcept override {
    std::unique_lock lock(state_->mutex_);
    if (state_->isStopped_ || node_.empty()) return;
    node_.front().prepared = shared_from_this();
    node_.front().owner = std::move(owner);
    state_->add(lane_, node_, lock);
  }

  /// Under the state's mutex.
  void takeBack(Node& node) noexcept { node_.splice(node_.begin(), node); }
  void run(const Owner& owner) const { body_(owner); }

 private:
  const std::shared_ptr<State> state_;
  const WorkLane lane_;
  const Body body_;
  Node node_;
};

void WorkQueue::State::post(WorkLane lane, Task task) noexcept {
  if (!task) return;
  Node node;
  if (!hasMemoryFor([&] { node.push_back({.task = std::move(task)}); })) return;
  std::unique_lock lock(mutex_);
  if (!isStopped_) add(lane, node, lock);
}

std::shared_ptr<PreparedTask> WorkQueue::State::prepare(WorkLane lane,
                                                        PreparedTask::Body body) noexcept {
  std::shared_ptr<PreparedTask> prepared;
  hasMemoryFor(
      [&] { prepared = std::make_shared<Prepared>(shared_from_this(), lane, std::move(body)); });
  return prepared;
}

// Under the mutex, which is released.
void WorkQueue::State::add(WorkLane lane, Node& node, std::unique_lock<std::mutex>& lock) noexcept {
  if (!isWatchingExit_) isWatchingExit_ = joinProcessExit(weak_from_this());
  node.front().number = nextNumber_++;
  auto& waiting = at(lane).waiting;
  waiting.splice(waiting.end(), node);
  if (holder_ == std::this_thread::get_id()) return;
  bringThread(lock) ? retries_->retry() : retries_->noteRefusal();
}

// Under the mutex, which is released. One thread at most is woken or started here: it does the same
// for the next task before it runs its own, which may hang. So a host call starts one at most.
// False when the system refuses.
bool WorkQueue::State::bringThread(std::unique_lock<std::mutex>& lock) noexcept {
  const std::size_t coming = freeThreads() - idle_.size();
  const bool isOneWanted = admissible() > coming;
  const std::optional<std::size_t> woken = isOneWanted ? idle_.take() : std::nullopt;
  const bool isRefused = isOneWanted && !woken && coming == 0 && !startThread();
  lock.unlock();
  // Under the mutex the thread would wake up only to wait for it.
  if (woken) idle_.wake(*woken);
  return !isRefused;
}

void WorkQueue::State::hold() noexcept {
  const std::lock_guard lock(mutex_);
  holder_ = std::this_thread::get_id();
}

void WorkQueue::State::release() noexcept {
  std::unique_lock lock(mutex_);
  holder_.reset();
  bringThread(lock) ? retries_->retry() : retries_->noteRefusal();
}

void WorkQueue::State::seekThread() noexcept {
  std::unique_lock lock(mutex_);
  const bool isRefused = !isStopped_ && wantsThread() && !startThread();
  lock.unlock();
  if (isRefused) retries_->noteRefusal();
}

void WorkQueue::State::stop() noexcept {
  std::array<std::list<Item>, 4> dropped;  // outside of the lock
  const std::lock_guard lock(mutex_);
  isStopped_ = true;
  filesEnd_ = std::chrono::steady_clock::now() + kMaxTimeAfterEnd;
  for (std::size_t i = 0; i < dropped.size(); ++i) {
    if (&lanes_[i] != &at(WorkLane::files)) dropped[i].swap(lanes_[i].waiting);
  }
  keepFiles(dropped.front());
  while (const auto woken = idle_.take()) idle_.wake(*woken);
}

// Under the mutex. What is kept needs a thread, which also keeps the state: without one it is lost.
void WorkQueue::State::keepFiles(std::list<Item>& dropped) noexcept {
  auto& waiting = at(WorkLane::files).waiting;
  if (waiting.size() > kMaxTasksAfterEnd) {
    const auto first = std::next(waiting.begin(), std::ptrdiff_t{kMaxTasksAfterEnd});
    dropped.splice(dropped.end(), waiting, first, waiting.end());
  }
  if (!waiting.empty() && wantsThread()) startThread();
  const bool isAnyAlive =
      std::find(isThreadAlive_.begin(), isThreadAlive_.end(), true) != isThreadAlive_.end();
  if (!isAnyAlive) dropped.splice(dropped.end(), waiting);
}

void WorkQueue::State::end() noexcept {
  stop();
  std::unique_lock lock(mutex_);
  const bool isOwnThread =
      std::any_of(threads_.begin(), threads_.end(),
                  [](const LibraryThread& thread) { return thread.isCurrent(); });
  // At the end of the process a thread may have come to rest for ever.
  if (!isOwnThread && !hasProcessExitBegun()) {
    changed_.wait(lock, [&] {
      return at(WorkLane::completions).running == 0 && at(WorkLane::facts).running == 0 &&
             at(WorkLane::images).running == 0;
    });
  }
  for (LibraryThread& thread : threads_) thread.detach();
}

std::size_t WorkQueue::State::admissible() const {
  std::size_t count = 0;
  for (const Lane& lane : lanes_) count += lane.admissible();
  return count;
}

// Under the mutex: those that wait, or are about to look for a task.
std::size_t WorkQueue::State::freeThreads() const {
  auto free =
      static_cast<std::size_t>(std::count(isThreadAlive_.begin(), isThreadAlive_.end(), true));
  for (const Lane& lane : lanes_) free -= lane.running;
  return free;
}

// Under the mutex. False when the system refuses; with all threads alive there is nothing to start.
bool WorkQueue::State::startThread() noexcept {
  const auto slot = static_cast<std::size_t>(std::distance(
      isThreadAlive_.begin(), std::find(isThreadAlive_.begin(), isThreadAlive_.end(), false)));
  if (slot == isThreadAlive_.size()) return true;
  threads_[slot].detach();  // one that ended idle may still be busy with what the host left on it
  hasMemoryFor([&] {
    isThreadAlive_[slot] =
        threads_[slot].start("qv-work", [self = shared_from_this(), slot] { self->run(slot); });
  });
  return isThreadAlive_[slot];
}

void WorkQueue::State::run(std::size_t slot) {
  std::list<Item> late;  // dropped outside of the lock
  std::unique_lock lock(mutex_);
  while (!isLate()) {
    if (Lane* const lane = nextLane()) {
      runNext(*lane, lock);
      continue;
    }
    if (isStopped_ || !idle_.wait(slot, lock, idleTime_)) break;
  }
  isThreadAlive_[slot] = false;
  if (isLate()) late.swap(at(WorkLane::files).waiting);
}

/// The lane with the oldest item that may run now; null when there is none.
WorkQueue::State::Lane* WorkQueue::State::nextLane() {
  Lane* next = nullptr;
  for (Lane& lane : lanes_) {
    if (lane.admissible() == 0) continue;
    if (next == nullptr || lane.waiting.front().number < next->waiting.front().number) {
      next = &lane;
    }
  }
  return next;
}

// A task behind the others tells that they have ended. It needs no further thread: whoever runs
// them takes it next.
bool WorkQueue::State::drain(WorkLane lane, std::chrono::steady_clock::time_point deadline) {
  const auto ended = std::make_shared<std::promise<void>>();
  Node node;
  node.push_back({.task = [ended] { ended->set_value(); }});
  {
    std::unique_lock lock(mutex_);
    const Lane& drained = at(lane);
    if (drained.running == 0 && drained.waiting.empty()) return true;
    add(lane, node, lock);
  }
  return ended->get_future().wait_until(deadline) == std::future_status::ready;
}

void WorkQueue::State::beginExit() noexcept {
  const std::lock_guard lock(mutex_);
  // A host's completion may use what its destructors are taking down.
  at(WorkLane::completions).isHeld = true;
  at(WorkLane::facts).isHeld = true;
  at(WorkLane::images).isHeld = true;
}

void WorkQueue::State::awaitExit(std::chrono::steady_clock::time_point deadline) noexcept {
  hasMemoryFor([&] { static_cast<void>(drain(WorkLane::files, deadline)); });
}

void WorkQueue::State::runNext(Lane& lane, std::unique_lock<std::mutex>& lock) {
  Node node;
  node.splice(node.begin(), lane.waiting, lane.waiting.begin());
  Item item = std::move(node.front());
  if (item.prepared) item.prepared->takeBack(node);  // it may be started again
  ++lane.running;
  if (!bringThread(lock)) retries_->noteRefusal();
  hasMemoryFor([&] { item.prepared ? item.prepared->run(item.owner) : item.task(); });
  item = {};  // what it holds may call back into the queue
  node.clear();
  retries_->retry();
  lock.lock();
  --lane.running;
  if (isStopped_) changed_.notify_all();
}

WorkQueue::WorkQueue(std::chrono::milliseconds idleTime, std::shared_ptr<ThreadRetries> retries)
    : state_(std::make_shared<State>(idleTime, retries)) {
  retries->join(state_);
}

WorkQueue::~WorkQueue() {
  if (!leakInForkedChild(state_)) state_->end();
}

void WorkQueue::post(WorkLane lane, Task task) { state_->post(lane, std::move(task)); }

std::shared_ptr<PreparedTask> WorkQueue::prepare(WorkLane lane, PreparedTask::Body body) {
  return state_->prepare(lane, std::move(body));
}

std::weak_ptr<WakeUps> WorkQueue::wakeUps() const { return state_; }

bool WorkQueue::drain(WorkLane lane, std::chrono::steady_clock::time_point deadline) {
  return state_->drain(lane, deadline);
}

}  // namespace quorvance
