#include "platform/linux/http/curl_http_session.h"

#include <curl/curl.h>

#include <deque>
#include <limits>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/linux/http/curl_transfer.h"
#include "platform/linux/http/url_check.h"

namespace quorvance {
namespace {

/// Handles that are kept for the next exchanges; more than that belong to a rare burst.
constexpr std::size_t kMaxIdleTransfers = 8;
/// Nothing is due: only a wake-up or the network ends the wait.
constexpr int kLongestWaitMilliseconds = std::numeric_limits<int>::max();

HttpReply failedReply(CURLcode code, std::string_view detail = {}) {
  HttpReply reply;
  reply.transportError = curlError(code, detail);
  return reply;
}

}  // namespace

struct CurlHttpSession::State {
  struct Call {
    HttpRequest request;
    HttpCompletion completion;
  };

  std::mutex mutex;
  std::deque<Task> tasks;
  std::deque<Call> waiting;
  bool isRunning = false;
  bool isStopped = false;
  // Set while the thread may be asleep in it.
  CURLM* multi = nullptr;

  /// Drops what waits, outside of the lock.
  void stop() {
    std::deque<Task> droppedTasks;
    std::deque<Call> droppedCalls;
    const std::lock_guard lock(mutex);
    isStopped = true;
    droppedTasks.swap(tasks);
    droppedCalls.swap(waiting);
    if (multi != nullptr) curl_multi_wakeup(multi);
  }
};

/// What runs on the thread.
class CurlHttpSession::Worker {
 public:
  Worker(std::shared_ptr<State> state, std::string caFile)
      : state_(std::move(state)), caFile_(std::move(caFile)) {}
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  void run();

 private:
  bool open();
  void refuseAll();
  void runTasks();
  void startWaiting();
  void startCall(State::Call call);
  void finishDone();
  void finishOne(CURL* handle, CURLcode code);
  void sleep();

  bool isStopped();
  std::optional<Task> takeTask();
  std::optional<State::Call> takeWaiting();
  std::unique_ptr<CurlTransfer> takeTransfer();
  void keep(std::unique_ptr<CurlTransfer> transfer);

  const std::shared_ptr<State> state_;
  const std::string caFile_;
  CURLM* multi_ = nullptr;
  std::unordered_map<CURL*, std::unique_ptr<CurlTransfer>> inFlight_;
  std::vector<std::unique_ptr<CurlTransfer>> idle_;
};

CurlHttpSession::Worker::~Worker() {
  if (multi_ == nullptr) return;
  {
    const std::lock_guard lock(state_->mutex);
    state_->multi = nullptr;
  }
  for (const auto& [handle, transfer] : inFlight_) curl_multi_remove_handle(multi_, handle);
  inFlight_.clear();
  idle_.clear();
  curl_multi_cleanup(multi_);
}

void CurlHttpSession::Worker::run() {
  if (!open()) {
    refuseAll();
    return;
  }
  while (!isStopped()) {
    runTasks();
    startWaiting();
    int running = 0;
    curl_multi_perform(multi_, &running);
    finishDone();
    sleep();
  }
}

bool CurlHttpSession::Worker::open() {
  // Never undone: the host may use the library too.
  if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) return false;
  multi_ = curl_multi_init();
  if (multi_ == nullptr) return false;
  constexpr long kConnections = kMaxInFlight;
  curl_multi_setopt(multi_, CURLMOPT_MAX_TOTAL_CONNECTIONS, kConnections);
  curl_multi_setopt(multi_, CURLMOPT_MAXCONNECTS, kConnections);
  const std::lock_guard lock(state_->mutex);
  state_->multi = multi_;
  return true;
}

/// Serves what is there with failures and ends the thread; the next use starts another one.
void CurlHttpSession::Worker::refuseAll() {
  for (;;) {
    runTasks();
    while (auto call = takeWaiting()) call->completion(failedReply(CURLE_FAILED_INIT));
    const std::lock_guard lock(state_->mutex);
    if (!state_->isStopped && !(state_->tasks.empty() && state_->waiting.empty())) continue;
    state_->isRunning = false;
    return;
  }
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
    (*task)();
  }
}

void CurlHttpSession::Worker::startWaiting() {
  while (inFlight_.size() < kMaxInFlight) {
    std::optional<State::Call> call = takeWaiting();
    if (!call) return;
    startCall(std::move(*call));
  }
}

void CurlHttpSession::Worker::startCall(State::Call call) {
  const UrlFault fault = faultOfUrl(call.request.url);
  if (fault != UrlFault::none) {
    const bool isForeign = fault == UrlFault::foreignScheme;
    call.completion(failedReply(isForeign ? CURLE_UNSUPPORTED_PROTOCOL : CURLE_URL_MALFORMAT,
                                textOfFault(fault)));
    return;
  }
  std::unique_ptr<CurlTransfer> transfer = takeTransfer();
  if (!transfer->isUsable()) {
    call.completion(failedReply(CURLE_OUT_OF_MEMORY));
    return;
  }
  CURL* const handle = transfer->handle();
  const CURLcode code = transfer->start(std::move(call.request), std::move(call.completion));
  if (code != CURLE_OK || curl_multi_add_handle(multi_, handle) != CURLM_OK) {
    transfer->takeCompletion()(failedReply(code != CURLE_OK ? code : CURLE_FAILED_INIT));
    return;
  }
  inFlight_.emplace(handle, std::move(transfer));
}

void CurlHttpSession::Worker::finishDone() {
  int left = 0;
  while (!isStopped()) {
    const CURLMsg* const message = curl_multi_info_read(multi_, &left);
    if (message == nullptr) return;
    if (message->msg != CURLMSG_DONE) continue;
    finishOne(message->easy_handle, message->data.result);
  }
}

void CurlHttpSession::Worker::finishOne(CURL* handle, CURLcode code) {
  const auto found = inFlight_.find(handle);
  std::unique_ptr<CurlTransfer> transfer = std::move(found->second);
  inFlight_.erase(found);
  curl_multi_remove_handle(multi_, handle);
  HttpReply reply = transfer->finish(code);
  const HttpCompletion completion = transfer->takeCompletion();
  keep(std::move(transfer));
  completion(std::move(reply));
}

void CurlHttpSession::Worker::sleep() {
  {
    const std::lock_guard lock(state_->mutex);
    const bool canStart = !state_->waiting.empty() && inFlight_.size() < kMaxInFlight;
    if (state_->isStopped || !state_->tasks.empty() || canStart) return;
  }
  // A wake-up that comes before the wait begins ends it at once.
  curl_multi_poll(multi_, nullptr, 0, kLongestWaitMilliseconds, nullptr);
}

bool CurlHttpSession::Worker::isStopped() {
  const std::lock_guard lock(state_->mutex);
  return state_->isStopped;
}

std::optional<Task> CurlHttpSession::Worker::takeTask() {
  const std::lock_guard lock(state_->mutex);
  if (state_->tasks.empty()) return std::nullopt;
  std::optional<Task> task = std::move(state_->tasks.front());
  state_->tasks.pop_front();
  return task;
}

std::optional<CurlHttpSession::State::Call> CurlHttpSession::Worker::takeWaiting() {
  const std::lock_guard lock(state_->mutex);
  if (state_->waiting.empty()) return std::nullopt;
  std::optional<State::Call> call = std::move(state_->waiting.front());
  state_->waiting.pop_front();
  return call;
}

std::unique_ptr<CurlTransfer> CurlHttpSession::Worker::takeTransfer() {
  if (idle_.empty()) return std::make_unique<CurlTransfer>(caFile_);
  std::unique_ptr<CurlTransfer> transfer = std::move(idle_.back());
  idle_.pop_back();
  return transfer;
}

void CurlHttpSession::Worker::keep(std::unique_ptr<CurlTransfer> transfer) {
  if (idle_.size() < kMaxIdleTransfers) idle_.push_back(std::move(transfer));
}

CurlHttpSession::CurlHttpSession(std::string caFile)
    : state_(std::make_shared<State>()), caFile_(std::move(caFile)) {}

CurlHttpSession::~CurlHttpSession() {
  state_->stop();
  thread_.finish();
}

void CurlHttpSession::dispatch(Task task) {
  if (!task) return;
  const std::lock_guard lock(state_->mutex);
  if (state_->isStopped) return;
  state_->tasks.push_back(std::move(task));
  wake();
}

void CurlHttpSession::send(HttpRequest request, HttpCompletion completion) {
  if (!completion) completion = [](const HttpReply&) {};
  const std::lock_guard lock(state_->mutex);
  if (state_->isStopped) return;
  if (state_->waiting.size() < kMaxWaiting) {
    state_->waiting.push_back({std::move(request), std::move(completion)});
  } else {
    state_->tasks.push_back([completion = std::move(completion)] {
      completion(failedReply(CURLE_AGAIN, "too many requests wait"));
    });
  }
  wake();
}

// Under the mutex.
void CurlHttpSession::wake() {
  if (!state_->isRunning) {
    thread_.finish();  // one that has ended takes no lock any more
    state_->isRunning = thread_.start(
        "qv-net", [state = state_, caFile = caFile_] { Worker(state, caFile).run(); });
  } else if (state_->multi != nullptr && !thread_.isCurrent()) {
    curl_multi_wakeup(state_->multi);
  }
}

}  // namespace quorvance
