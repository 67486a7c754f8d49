#include "apps/risk_server/http/http_listener.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <set>
#include <system_error>
#include <thread>
#include <utility>

#include "apps/risk_server/http/client_connection.h"
#include "apps/risk_server/http/listening_socket.h"
#include "apps/risk_server/http/request_dispatcher.h"
#include "apps/risk_server/http/text_codecs.h"

namespace risk_server {
namespace {

// Before accepting again when the system is short of descriptors or memory.
constexpr std::chrono::milliseconds kShortagePause{100};

}  // namespace

// Every worker accepts for itself and serves what it accepted until that connection ends. Going
// down or stopping ends accepting and reading everywhere. While down all workers wait; the first to
// see that the time is over listens again. mutex_ guards what stands below it.
class HttpListener::Workers {
 public:
  Workers(Handler handler, ConnectionFilter acceptsConnection, StateObserver stateChanged,
          ListenerLimits limits)
      : dispatcher_(RequestDispatcher::make(std::move(handler), limits.idle)),
        acceptsConnection_(std::move(acceptsConnection)),
        stateChanged_(std::move(stateChanged)),
        limits_(limits) {}

  void start(int port) {
    {
      const std::lock_guard lock(mutex_);
      socket_ = std::make_unique<ListeningSocket>(port);
      isUp_ = true;
    }
    for (int i = 0; i < limits_.workers; ++i) threads_.emplace_back([this] { work(); });
  }

  int port() const {
    const std::lock_guard lock(mutex_);
    return socket_ ? socket_->port() : 0;
  }

  void stop() {
    {
      const std::lock_guard lock(mutex_);
      stopping_ = true;
      endEverything();
    }
    changed_.notify_all();
    for (std::thread& thread : threads_) thread.join();
    threads_.clear();
    const std::lock_guard lock(mutex_);
    socket_.reset();
  }

  void goDown(std::optional<std::chrono::milliseconds> downTime) {
    {
      const std::lock_guard lock(mutex_);
      if (!socket_ || stopping_) return;
      endEverything();
      upAt_.reset();
      if (downTime) upAt_ = Clock::now() + std::min(*downTime, kMaxDownTime);
    }
    changed_.notify_all();
    tellState();
  }

  void comeUp() {
    {
      const std::lock_guard lock(mutex_);
      if (socket_ && !stopping_ && !isUp_) listenAgain();
    }
    tellState();
  }

  bool isUp() const {
    const std::lock_guard lock(mutex_);
    return isUp_;
  }

  bool waitUntilUp(std::chrono::milliseconds timeout) const {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, timeout, [this] { return isUp_ || stopping_; });
    return isUp_;
  }

 private:
  using Clock = std::chrono::steady_clock;

  void work() {
    while (isUpAtLast()) {
      const int descriptor = socket_->acceptOne();
      if (descriptor >= 0) {
        serve(descriptor);
      } else if (errno != EINTR && errno != ECONNABORTED && errno != EINVAL) {
        // Not EINVAL: that one says that the socket does not listen any more.
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, kShortagePause, [this] { return !isUp_; });
      }
    }
  }

  // Blocks while down; false when stopped.
  bool isUpAtLast() {
    std::unique_lock lock(mutex_);
    while (!stopping_ && !isUp_) {
      if (!upAt_) {
        changed_.wait(lock);
      } else if (Clock::now() < *upAt_) {
        changed_.wait_until(lock, Clock::time_point(*upAt_));
      } else {
        tryToListenAgain();
        lock.unlock();
        tellState();
        lock.lock();
      }
    }
    return !stopping_;
  }

  void tryToListenAgain() {
    try {
      listenAgain();
    } catch (const std::system_error&) {
      // Another server took the port meanwhile, and may leave it.
      upAt_ = Clock::now() + kShortagePause;
    }
  }

  void tellState() const {
    if (stateChanged_) stateChanged_();
  }

  void listenAgain() {
    socket_->listenAgain();
    upAt_.reset();
    isUp_ = true;
    changed_.notify_all();
  }

  void endEverything() {
    if (socket_ && isUp_) socket_->endAccepting();
    isUp_ = false;
    for (ClientConnection* connection : live_) connection->endReading();
  }

  void serve(int descriptor) {
    ClientConnection connection(descriptor, limits_);
    if (!acceptsConnection_()) return;
    {
      const std::lock_guard lock(mutex_);
      live_.insert(&connection);
      // Accepted just before it went down.
      if (!isUp_) connection.endReading();
    }
    while (connection.waitForRequest() && dispatcher_->serveOne(connection)) {
    }
    connection.drain();
    const std::lock_guard lock(mutex_);
    live_.erase(&connection);
  }

  const std::unique_ptr<RequestDispatcher> dispatcher_;
  const ConnectionFilter acceptsConnection_;
  const StateObserver stateChanged_;
  const ListenerLimits limits_;
  std::vector<std::thread> threads_;
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::unique_ptr<ListeningSocket> socket_;  // changes only while there are no workers
  std::set<ClientConnection*> live_;
  bool stopping_ = false;
  bool isUp_ = false;
  std::optional<Clock::time_point> upAt_;  // while down; none: comeUp() ends it
};

std::vector<std::string> HttpRequest::headersNamed(std::string_view name) const {
  std::vector<std::string> values;
  for (const auto& [key, value] : headers) {
    if (equalWithoutCase(key, name)) values.push_back(value);
  }
  return values;
}

HttpListener::HttpListener(Handler handler, ConnectionFilter acceptsConnection,
                           StateObserver stateChanged, ListenerLimits limits)
    : workers_(std::make_unique<Workers>(std::move(handler), std::move(acceptsConnection),
                                         std::move(stateChanged), limits)) {}

HttpListener::~HttpListener() { stop(); }

void HttpListener::start(int port) { workers_->start(port); }

int HttpListener::port() const { return workers_->port(); }

void HttpListener::stop() { workers_->stop(); }

void HttpListener::goDown() { workers_->goDown(std::nullopt); }

void HttpListener::comeUp() { workers_->comeUp(); }

void HttpListener::restart(std::chrono::milliseconds downTime) { workers_->goDown(downTime); }

bool HttpListener::isUp() const { return workers_->isUp(); }

bool HttpListener::waitUntilUp(std::chrono::milliseconds timeout) const {
  return workers_->waitUntilUp(timeout);
}

}  // namespace risk_server
