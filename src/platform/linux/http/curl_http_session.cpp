#include "platform/linux/http/curl_http_session.h"

#include <curl/curl.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <list>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/forked_child.h"
#include "base/out_of_memory.h"
#include "platform/linux/http/curl_library.h"
#include "platform/linux/http/curl_transfer.h"
#include "platform/linux/http/curl_wakeup_pair.h"
#include "platform/linux/http/http_policy.h"
#include "platform/linux/http/session_timers.h"
#include "platform/linux/http/url_check.h"
#include "platform/linux/http/wake_up_event.h"
#include "platform/linux/threads/library_thread.h"
#include "platform/linux/threads/process_exit.h"

namespace quorvance {
namespace {

/// Handles that are kept for the next exchanges; more than that belong to a rare burst.
constexpr std::size_t kMaxIdleTransfers = 8;
HttpReply failedReply(CURLcode code, std::string_view detail = {}) {
  HttpReply reply;
  reply.transportError = curlError(code, detail);
  reply.fault = transportFaultOf(code);
  return reply;
}

}  // namespace

struct CurlHttpSession::State : ThreadSeeker, ExitParticipant, std::enable_shared_from_this<State> {
  struct Call {
    HttpRequest request;
    HttpCompletion completion;
  };

  State(HttpOptions options, std::shared_ptr<ThreadRetries> threadRetries,
        std::weak_ptr<WakeUps> wakeUpsOfQueue, std::chrono::milliseconds longestIdle)
      : policy(std::move(options)),
        retries(std::move(threadRetries)),
        wakeUps(std::move(wakeUpsOfQueue)),
        maxIdleTime(longestIdle) {}

  // The thread's own.
  HttpPolicy policy;
  const std::shared_ptr<ThreadRetries> retries;
  const std::weak_ptr<WakeUps> wakeUps;
  const std::chrono::milliseconds maxIdleTime;
  std::mutex mutex;
  LibraryThread thread;
  std::list<Task> tasks;
  SessionTimers timers;
  std::list<Call> waiting;
  // Open before the thread starts.
  WakeUpEvent wakeUp;
  bool isWatchingExit = false;
  bool isRunning = false;
  bool isStopped = false;
  // The thread waits, or is about to, and nobody has woken it yet.
  bool isAsleep = false;
  // The process ends: the thread leaves libcurl, says so, and never comes back to it.
  bool isExiting = false;
  bool isAtRest = false;
  // The thread has ended, or rests.
  std::condition_variable isDone;

  /// Under the mutex, which is released: what waits reaches the thread.
  void wake(std::unique_lock<std::mutex>& lock) noexcept;
  void seekThread() noexcept override;
  bool startThread() noexcept;

  /// Drops what waits, outside of the lock. Needs no memory: lists that are empty have none.
  void stop() noexcept {
    std::list<Task> droppedTasks;
    std::list<Call> droppedCalls;
    SessionTimers droppedTimers;
    const std::lock_guard lock(mutex);
    isStopped = true;
    droppedTasks.swap(tasks);
    droppedCalls.swap(waiting);
    droppedTimers.swap(timers);
    wakeUp.signal();
  }

  /// For the thread, wherever it is out of libcurl. Does not return once the process ends.
  std::unique_lock<std::mutex> lockOrRest() {
    std::unique_lock lock(mutex);
    isAsleep = false;
    if (isExiting) {
      isAtRest = true;
      isDone.notify_all();
      isDone.wait(lock, [] { return false; });
    }
    return lock;
  }

  void beginExit() noexcept override {
    const std::lock_guard lock(mutex);
    isExiting = true;
    wakeUp.signal();
  }

  void awaitExit(std::chrono::steady_clock::time_point deadline) noexcept override {
    std::unique_lock lock(mutex);
    isDone.wait_until(lock, deadline, [&] { return isAtRest || !isRunning; });
  }

  void awaitEnd() {
    std::unique_lock lock(mutex);
    isDone.wait(lock, [&] { return isAtRest || !isRunning; });
  }
};

/// What runs on the thread.
class CurlHttpSession::Worker {
 public:
  explicit Worker(std::shared_ptr<State> state) : state_(std::move(state)) {}
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  void run();

 private:
  void open();
  void runTasks();
  void runTimers();
  bool startWaiting();
  void startCall(State::Call call);
  void perform();
  void finishDone();
  void finishOne(CURL* handle, CURLcode code);
  bool sleep();
  int restWait() const;
  void closeWhenIdle();

  bool isStopped();
  std::optional<Task> takeTask();
  std::optional<Task> takeDueTimer(SessionTimers::Clock::time_point now);
  std::optional<State::Call> takeWaiting();
  std::unique_ptr<CurlTransfer> takeTransfer();
  void keep(std::unique_ptr<CurlTransfer> transfer);

  const std::shared_ptr<State> state_;
  bool hasOpened_ = false;
  // While there is something to send, and until its connections have rested for long.
  CURLM* multi_ = nullptr;
  std::unordered_map<CURL*, std::unique_ptr<CurlTransfer>> inFlight_;
  std::vector<std::unique_ptr<CurlTransfer>> idle_;
  // The last exchange ended then; before the first one, libcurl was opened then.
  std::chrono::steady_clock::time_point idleSince_;
};

CurlHttpSession::Worker::~Worker() {
  for (const auto& [handle, transfer] : inFlight_) curl_multi_remove_handle(multi_, handle);
  inFlight_.clear();
  idle_.clear();
  if (multi_ != nullptr) curl_multi_cleanup(multi_);
  if (hasOpened_) leaveCurlLibrary();
  const std::lock_guard lock(state_->mutex);
  state_->isRunning = false;
  state_->isDone.notify_all();
}

// What a turn of the network has had posted runs at once, before the next turn.
void CurlHttpSession::Worker::run() {
  bool isTurnDue = true;
  while (!isStopped()) {
    runTasks();
    runTimers();
    const bool hasTurn = startWaiting() || isTurnDue;
    if (hasTurn) perform();
    isTurnDue = sleep() || !hasTurn;
    closeWhenIdle();
  }
}

// What fails here is tried again by the next use; what waits until then fails.
void CurlHttpSession::Worker::open() {
  if (multi_ != nullptr || !openCurlLibrary()) return;
  hasOpened_ = true;
  multi_ = curl_multi_init();
  if (multi_ == nullptr) return;
  hasMemoryFor([&] { closeWakeupPairOnExec(multi_); });
  constexpr long kConnections = kMaxInFlight;
  curl_multi_setopt(multi_, CURLMOPT_MAX_TOTAL_CONNECTIONS, kConnections);
  curl_multi_setopt(multi_, CURLMOPT_MAXCONNECTS, kConnections);
  idleSince_ = std::chrono::steady_clock::now();
}

// Those that are there now: what they dispatch waits until the network has had its turn.
void CurlHttpSession::Worker::runTasks() {
  std::size_t count = 0;
  {
    const std::lock_guard lock(state_->mutex);
    count = state_->tasks.size();
  }
  for (; count > 0; --count) {
    const std::optional<Task> task = takeTask();
    if (!task) return;
    hasMemoryFor(*task);
  }
}

void CurlHttpSession::Worker::runTimers() {
  const auto now = SessionTimers::Clock::now();
  while (const std::optional<Task> task = takeDueTimer(now)) hasMemoryFor(*task);
}

// True when there was any.
bool CurlHttpSession::Worker::startWaiting() {
  bool isAnyStarted = false;
  while (inFlight_.size() < kMaxInFlight) {
    std::optional<State::Call> call = takeWaiting();
    if (!call) break;
    isAnyStarted = true;
    open();
    hasMemoryFor([&] { startCall(std::move(*call)); });
  }
  return isAnyStarted;
}

void CurlHttpSession::Worker::startCall(State::Call call) {
  if (multi_ == nullptr) {
    call.completion(failedReply(CURLE_FAILED_INIT));
    return;
  }
  const UrlFault fault = faultOfUrl(call.request.url);
  if (fault != UrlFault::none) {
    const bool isForeign = fault == UrlFault::foreignScheme;
    call.completion(failedReply(isForeign ? CURLE_UNSUPPORTED_PROTOCOL : CURLE_URL_MALFORMAT,
                                textOfFault(fault)));
    return;
  }
  if (const std::string refused = state_->policy.faultOf(call.request.url); !refused.empty()) {
    call.completion(failedReply(CURLE_SETOPT_OPTION_SYNTAX, refused));
    return;
  }
  std::unique_ptr<CurlTransfer> transfer = takeTransfer();
  if (!transfer->isUsable()) {
    call.completion(failedReply(CURLE_OUT_OF_MEMORY));
    return;
  }
  CURL* const handle = transfer->handle();
  const CURLcode code = transfer->start(std::move(call.request), std::move(call.completion));
  // Before libcurl knows the handle: this needs memory.
  const auto place = inFlight_.emplace(handle, std::move(transfer)).first;
  if (code == CURLE_OK && curl_multi_add_handle(multi_, handle) == CURLM_OK) return;
  const HttpCompletion completion = place->second->takeCompletion();
  inFlight_.erase(place);
  completion(failedReply(code != CURLE_OK ? code : CURLE_FAILED_INIT));
}

void CurlHttpSession::Worker::perform() {
  if (multi_ == nullptr) return;
  int running = 0;
  curl_multi_perform(multi_, &running);
  finishDone();
}

void CurlHttpSession::Worker::finishDone() {
  int left = 0;
  std::optional<HeldWakeUps> held;
  while (!isStopped()) {
    const CURLMsg* const message = curl_multi_info_read(multi_, &left);
    if (message == nullptr) return;
    if (message->msg != CURLMSG_DONE) continue;
    if (!held) held.emplace(state_->wakeUps);
    hasMemoryFor([&] { finishOne(message->easy_handle, message->data.result); });
  }
}

void CurlHttpSession::Worker::finishOne(CURL* handle, CURLcode code) {
  const auto found = inFlight_.find(handle);
  std::unique_ptr<CurlTransfer> transfer = std::move(found->second);
  inFlight_.erase(found);
  curl_multi_remove_handle(multi_, handle);
  idleSince_ = std::chrono::steady_clock::now();
  HttpReply reply = transfer->finish(code);
  const HttpCompletion completion = transfer->takeCompletion();
  keep(std::move(transfer));
  completion(std::move(reply));
}

// False when there is work: it has not slept.
bool CurlHttpSession::Worker::sleep() {
  int wait = restWait();
  {
    const auto lock = state_->lockOrRest();
    const bool canStart = !state_->waiting.empty() && inFlight_.size() < kMaxInFlight;
    if (state_->isStopped || !state_->tasks.empty() || canStart) return false;
    wait = std::min(wait, state_->timers.waitMilliseconds());
    state_->isAsleep = true;
  }
  // Not libcurl's own wake-up: it is missing, in silence, when there was no descriptor for it.
  curl_waitfd wakeUp = {state_->wakeUp.descriptor(), CURL_WAIT_POLLIN, 0};
  if (multi_ == nullptr) {
    state_->wakeUp.wait(wait);
  } else {
    curl_multi_poll(multi_, &wakeUp, 1, wait, nullptr);
  }
  if (multi_ == nullptr || wakeUp.revents != 0) state_->wakeUp.reset();
  return true;
}

// How long until nothing has used the connections for too long, in milliseconds.
int CurlHttpSession::Worker::restWait() const {
  constexpr int kLongest = SessionTimers::kLongestWaitMilliseconds;
  if (multi_ == nullptr || !inFlight_.empty()) return kLongest;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(idleSince_ + state_->maxIdleTime -
                                                                 std::chrono::steady_clock::now());
  return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, kLongest));
}

// libcurl looks at the age of its connections only when it is used, and has no other way to close
// those that rest. What opens it again is the next use.
void CurlHttpSession::Worker::closeWhenIdle() {
  if (multi_ == nullptr || restWait() > 0) return;
  {
    const auto lock = state_->lockOrRest();
    if (state_->isStopped || !state_->tasks.empty() || !state_->waiting.empty()) return;
  }
  curl_multi_cleanup(multi_);
  multi_ = nullptr;
}

bool CurlHttpSession::Worker::isStopped() {
  const auto lock = state_->lockOrRest();
  return state_->isStopped;
}

std::optional<Task> CurlHttpSession::Worker::takeTask() {
  const auto lock = state_->lockOrRest();
  if (state_->tasks.empty()) return std::nullopt;
  std::optional<Task> task = std::move(state_->tasks.front());
  state_->tasks.pop_front();
  return task;
}

std::optional<Task> CurlHttpSession::Worker::takeDueTimer(SessionTimers::Clock::time_point now) {
  const auto lock = state_->lockOrRest();
  return state_->timers.takeDue(now);
}

std::optional<CurlHttpSession::State::Call> CurlHttpSession::Worker::takeWaiting() {
  const auto lock = state_->lockOrRest();
  if (state_->waiting.empty()) return std::nullopt;
  std::optional<State::Call> call = std::move(state_->waiting.front());
  state_->waiting.pop_front();
  return call;
}

std::unique_ptr<CurlTransfer> CurlHttpSession::Worker::takeTransfer() {
  if (idle_.empty()) return std::make_unique<CurlTransfer>(state_->policy.options());
  std::unique_ptr<CurlTransfer> transfer = std::move(idle_.back());
  idle_.pop_back();
  return transfer;
}

void CurlHttpSession::Worker::keep(std::unique_ptr<CurlTransfer> transfer) {
  if (idle_.size() == kMaxIdleTransfers) return;
  // At worst the next exchange makes another one.
  hasMemoryFor([&] { idle_.push_back(std::move(transfer)); });
}

// Without a thread or a descriptor everything waits until somebody tries again.
void CurlHttpSession::State::wake(std::unique_lock<std::mutex>& lock) noexcept {
  const bool isRefused = !isRunning && !startThread();
  const bool isToBeWoken = std::exchange(isAsleep, false);
  lock.unlock();
  // Under the mutex the thread would wake up only to wait for it.
  if (isToBeWoken) wakeUp.signal();
  isRefused ? retries->noteRefusal() : retries->retry();
}

void CurlHttpSession::State::seekThread() noexcept {
  std::unique_lock lock(mutex);
  const bool hasWork = !tasks.empty() || !waiting.empty() || !timers.isEmpty();
  const bool isRefused = hasWork && !isRunning && !startThread();
  lock.unlock();
  if (isRefused) retries->noteRefusal();
}

// Under the mutex.
bool CurlHttpSession::State::startThread() noexcept {
  if (!wakeUp.open()) return false;
  if (!isWatchingExit) isWatchingExit = joinProcessExit(weak_from_this());
  if (!isWatchingExit) return false;
  hasMemoryFor([&] {
    isRunning = thread.start("qv-net", [self = shared_from_this()] { Worker(self).run(); });
  });
  return isRunning;
}

CurlHttpSession::CurlHttpSession(HttpOptions options, std::shared_ptr<ThreadRetries> retries,
                                 std::weak_ptr<WakeUps> wakeUps,
                                 std::chrono::milliseconds maxIdleTime)
    : state_(
          std::make_shared<State>(std::move(options), retries, std::move(wakeUps), maxIdleTime)) {
  retries->join(state_);
}

CurlHttpSession::~CurlHttpSession() {
  if (leakInForkedChild(state_)) return;
  state_->stop();
  if (!state_->thread.isCurrent()) state_->awaitEnd();
  state_->thread.detach();
}

void CurlHttpSession::dispatch(Task task) {
  if (!task) return;
  std::unique_lock lock(state_->mutex);
  if (state_->isStopped) return;
  if (hasMemoryFor([&] { state_->tasks.push_back(std::move(task)); })) state_->wake(lock);
}

bool CurlHttpSession::dispatchAfter(std::chrono::milliseconds delay, Task task) {
  SessionTimers added;  // made before the lock is taken
  if (!hasMemoryFor([&] { added = SessionTimers(delay, std::move(task)); })) return true;
  std::unique_lock lock(state_->mutex);
  if (state_->isStopped) return true;
  state_->timers.take(added);
  state_->wake(lock);
  return true;
}

void CurlHttpSession::send(HttpRequest request, HttpCompletion completion) {
  if (!completion) completion = [](const HttpReply&) {};
  // Not made under the lock: what is dropped there may come back here.
  State::Call call{std::move(request), std::move(completion)};
  std::unique_lock lock(state_->mutex);
  if (state_->isStopped) return;
  if (state_->waiting.size() < kMaxWaiting) {
    if (hasMemoryFor([&] { state_->waiting.push_back(std::move(call)); })) state_->wake(lock);
    return;
  }
  lock.unlock();
  hasMemoryFor([&] {
    dispatch([completion = std::move(call.completion)] {
      completion(failedReply(CURLE_AGAIN, "too many requests wait"));
    });
  });
}

}  // namespace quorvance
