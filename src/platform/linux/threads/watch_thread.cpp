#include "platform/linux/threads/watch_thread.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <limits>
#include <list>
#include <mutex>
#include <utility>
#include <vector>

#include "base/forked_child.h"
#include "base/out_of_memory.h"
#include "platform/linux/threads/library_thread.h"
#include "platform/linux/threads/process_exit.h"

namespace quorvance {
namespace {

constexpr int kNoTimeout = -1;

using Deadline = std::optional<std::chrono::steady_clock::time_point>;

/// Milliseconds for poll(2), rounded up: never early.
int timeoutUntil(const Deadline& deadline) {
  if (!deadline) return kNoTimeout;
  const auto left =
      std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now());
  constexpr std::int64_t kMost = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, kMost));
}

bool hasPassed(const Deadline& deadline) {
  return deadline && *deadline <= std::chrono::steady_clock::now();
}

}  // namespace

class WatchThread::State : public ThreadSeeker,
                           public ExitParticipant,
                           public std::enable_shared_from_this<State> {
 public:
  explicit State(std::shared_ptr<ThreadRetries> retries) : retries_(std::move(retries)) {}
  ~State() override {
    if (wakeUp_ >= 0) close(wakeUp_);
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  void post(Task task) noexcept;
  void keep(std::shared_ptr<Watch> watch);
  void stop() noexcept;
  void seekThread() noexcept override;
  void beginExit() noexcept override;
  void awaitExit(std::chrono::steady_clock::time_point deadline) noexcept override;

 private:
  struct Entry {
    std::shared_ptr<Watch> watch;
    Deadline deadline{};
  };

  void wake() const;
  bool startThread() noexcept;
  void run();
  bool takePosted(std::list<Task>& tasks);
  int pollAll();
  void waitAndRun();

  const std::shared_ptr<ThreadRetries> retries_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::list<Task> posted_;
  bool isStopped_ = false;
  bool isRunning_ = false;
  bool isExiting_ = false;
  bool isAtRest_ = false;
  bool isWatchingExit_ = false;
  /// Made with the first task.
  int wakeUp_ = -1;

  // The running thread's own. There is room to poll all watches and the wake-up.
  std::vector<Entry> watches_;
  std::vector<pollfd> polled_;
};

void WatchThread::State::wake() const {
  const std::uint64_t one = 1;
  // A counter that is full wakes as well.
  if (wakeUp_ >= 0) static_cast<void>(!write(wakeUp_, &one, sizeof one));
}

void WatchThread::State::post(Task task) noexcept {
  std::list<Task> node;
  if (!hasMemoryFor([&] { node.push_back(std::move(task)); })) return;
  std::unique_lock lock(mutex_);
  if (isStopped_) return;
  if (!isWatchingExit_) isWatchingExit_ = joinProcessExit(weak_from_this());
  posted_.splice(posted_.end(), node);
  const bool isRefused = !startThread();
  wake();
  lock.unlock();
  if (isRefused) retries_->noteRefusal();
}

void WatchThread::State::seekThread() noexcept {
  std::unique_lock lock(mutex_);
  const bool isRefused = !posted_.empty() && !startThread();
  lock.unlock();
  if (isRefused) retries_->noteRefusal();
}

// Under the mutex. False when the system refuses a thread, or the descriptor that wakes it.
bool WatchThread::State::startThread() noexcept {
  if (isRunning_ || isExiting_) return true;
  if (wakeUp_ < 0) wakeUp_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (wakeUp_ < 0) return false;
  LibraryThread thread;
  hasMemoryFor(
      [&] { isRunning_ = thread.start("qv-watch", [self = shared_from_this()] { self->run(); }); });
  thread.detach();
  return isRunning_;
}

// What is dropped may call back.
void WatchThread::State::stop() noexcept {
  std::list<Task> dropped;
  const std::lock_guard lock(mutex_);
  isStopped_ = true;
  dropped.swap(posted_);
  wake();
}

void WatchThread::State::beginExit() noexcept {
  const std::lock_guard lock(mutex_);
  isExiting_ = true;
  wake();
}

void WatchThread::State::awaitExit(std::chrono::steady_clock::time_point deadline) noexcept {
  std::unique_lock lock(mutex_);
  changed_.wait_until(lock, deadline, [&] { return isAtRest_ || !isRunning_; });
}

/// False when the thread is to end: it is told to, or nothing is left to wait for. Then it touches
/// nothing any more, since the next one may run already.
bool WatchThread::State::takePosted(std::list<Task>& tasks) {
  std::vector<Entry> dropped;
  std::unique_lock lock(mutex_);
  if (isExiting_) {
    isAtRest_ = true;
    changed_.notify_all();
    changed_.wait(lock, [] { return false; });
  }
  tasks.swap(posted_);
  if (isStopped_) dropped.swap(watches_);
  if (!tasks.empty() || !watches_.empty()) return true;
  isRunning_ = false;
  changed_.notify_all();
  return false;
}

void WatchThread::State::keep(std::shared_ptr<Watch> watch) {
  polled_.reserve(watches_.size() + 2);
  watches_.push_back({std::move(watch)});
}

int WatchThread::State::pollAll() {
  Deadline first;
  polled_.assign(1, {wakeUp_, POLLIN, 0});
  for (Entry& entry : watches_) {
    const Watch::Need need = entry.watch->need();
    entry.deadline = need.deadline;
    polled_.push_back({need.descriptor, need.events, 0});
    if (need.deadline && (!first || *need.deadline < *first)) first = need.deadline;
  }
  return poll(polled_.data(), polled_.size(), timeoutUntil(first));
}

void WatchThread::State::waitAndRun() {
  if (watches_.empty() || pollAll() < 0) return;
  std::uint64_t count = 0;
  static_cast<void>(!read(wakeUp_, &count, sizeof count));
  auto polled = polled_.begin();
  // A watch that adds another one posts it, so none has come meanwhile.
  std::erase_if(watches_, [&](const Entry& entry) {
    const bool isDue = (++polled)->revents != 0 || hasPassed(entry.deadline);
    bool goesOn = true;
    if (isDue) hasMemoryFor([&] { goesOn = entry.watch->run(); });
    return !goesOn;
  });
}

void WatchThread::State::run() {
  std::list<Task> tasks;
  while (takePosted(tasks)) {
    for (const Task& task : tasks) hasMemoryFor(task);
    tasks.clear();
    waitAndRun();
  }
}

WatchThread::WatchThread(std::shared_ptr<ThreadRetries> retries)
    : state_(std::make_shared<State>(retries)) {
  retries->join(state_);
}

WatchThread::~WatchThread() {
  if (!leakInForkedChild(state_)) state_->stop();
}

void WatchThread::post(Task task) {
  if (!isForkedChild()) state_->post(std::move(task));
}

void WatchThread::add(std::shared_ptr<Watch> watch) {
  // The state is alive while its tasks run.
  post([state = state_.get(), watch = std::move(watch)]() mutable {
    state->keep(std::move(watch));
  });
}

}  // namespace quorvance
