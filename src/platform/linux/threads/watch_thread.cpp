#include "platform/linux/threads/watch_thread.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <limits>
#include <utility>

#include "base/forked_child.h"

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

// What finds no memory is given up: nothing of the host's may fail with it.
template <class Step>
bool runGuarded(Step&& step) {
  try {
    return step();
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace

struct WatchThread::State {
  std::mutex mutex;
  std::vector<Task> posted;
  bool isStopped = false;
  bool isRunning = false;
  /// Made with the first task, under the mutex.
  int wakeUp = -1;

  // The running thread's own.
  std::vector<std::shared_ptr<Watch>> watches;

  State() = default;
  ~State() {
    if (wakeUp >= 0) close(wakeUp);
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;

  void wake() const {
    const std::uint64_t one = 1;
    // A counter that is full wakes as well.
    static_cast<void>(!write(wakeUp, &one, sizeof one));
  }
  void run();
  bool takePosted(std::vector<Task>& tasks);
  void waitAndRun();
};

/// False when the thread is to end: it is told to, or nothing is left to wait for. Then it touches
/// nothing any more, since the next one may run already.
bool WatchThread::State::takePosted(std::vector<Task>& tasks) {
  std::vector<std::shared_ptr<Watch>> dropped;
  const std::lock_guard lock(mutex);
  tasks.swap(posted);
  if (isStopped) dropped.swap(watches);
  if (!tasks.empty() || !watches.empty()) return true;
  isRunning = false;
  return false;
}

void WatchThread::State::waitAndRun() {
  if (watches.empty()) return;
  std::vector<pollfd> polled = {{wakeUp, POLLIN, 0}};
  std::vector<Deadline> deadlines = {{}};
  Deadline first;
  for (const auto& watch : watches) {
    const Watch::Need need = watch->need();
    polled.push_back({need.descriptor, need.events, 0});
    deadlines.push_back(need.deadline);
    if (need.deadline && (!first || *need.deadline < *first)) first = need.deadline;
  }
  if (poll(polled.data(), polled.size(), timeoutUntil(first)) < 0) return;
  std::uint64_t count = 0;
  static_cast<void>(!read(wakeUp, &count, sizeof count));
  std::vector<std::shared_ptr<Watch>> kept;
  for (std::size_t i = 0; i < watches.size(); ++i) {
    const bool isDue = polled[i + 1].revents != 0 || hasPassed(deadlines[i + 1]);
    if (!isDue || runGuarded([&] { return watches[i]->run(); })) kept.push_back(watches[i]);
  }
  // A watch that adds another one posts it, so none has come meanwhile.
  watches.swap(kept);
}

void WatchThread::State::run() {
  std::vector<Task> tasks;
  while (takePosted(tasks)) {
    for (const Task& task : tasks) {
      static_cast<void>(runGuarded([&] { return task(), true; }));
    }
    tasks.clear();
    if (!runGuarded([&] { return waitAndRun(), true; })) watches.clear();
  }
}

WatchThread::WatchThread() : state_(std::make_shared<State>()), process_(getpid()) {}

WatchThread::~WatchThread() {
  if (process_ != getpid()) {
    // The lock may be held by a thread that this process does not have.
    static_cast<void>(new std::shared_ptr<State>(std::move(state_)));
    return;
  }
  const std::lock_guard lock(state_->mutex);
  state_->isStopped = true;
  state_->posted.clear();
  if (state_->isRunning) state_->wake();
}

void WatchThread::post(Task task) {
  if (isForkedChild() || process_ != getpid()) return;
  const std::lock_guard lock(state_->mutex);
  if (state_->wakeUp < 0) state_->wakeUp = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  if (state_->wakeUp < 0) return;
  state_->posted.push_back(std::move(task));
  state_->wake();
  if (state_->isRunning) return;
  LibraryThread thread;
  state_->isRunning = thread.start("qv-watch", [state = state_] { state->run(); });
  if (!state_->isRunning) state_->posted.clear();
  thread.detach();
}

void WatchThread::add(std::shared_ptr<Watch> watch) {
  // The state is alive while its tasks run.
  post([state = state_.get(), watch = std::move(watch)]() mutable {
    state->watches.push_back(std::move(watch));
  });
}

}  // namespace quorvance
