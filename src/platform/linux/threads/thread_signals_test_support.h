#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <utility>

namespace quorvance {

/// Longer than anything that a test waits for; only a failing test waits so long.
inline constexpr std::chrono::seconds kThreadTestPatience{30};

/// What a host may leave on a thread: an object whose destruction takes until it is released and
/// then calls back.
class SlowThreadLocal {
 public:
  ~SlowThreadLocal() { release(); }

  /// Called on the thread, once.
  void leaveOnThread(std::function<void()> atEnd = {}) {
    struct Sentinel {
      std::shared_ptr<Signals> signals;
      std::function<void()> atEnd;
      ~Sentinel() {
        signals->begun.set_value();
        signals->mayEnd.get_future().wait();
        if (atEnd) atEnd();
      }
    };
    thread_local Sentinel sentinel = {signals_, std::move(atEnd)};
    static_cast<void>(sentinel);
  }
  void waitForDestruction() { signals_->begun.get_future().wait(); }
  void release() {
    if (!std::exchange(isReleased_, true)) signals_->mayEnd.set_value();
  }

 private:
  struct Signals {
    std::promise<void> begun;
    std::promise<void> mayEnd;
  };

  std::shared_ptr<Signals> signals_ = std::make_shared<Signals>();
  bool isReleased_ = false;
};

/// Whether the call returns while nothing else of the test goes on.
inline bool returnsByItself(std::function<void()> call) {
  auto returned = std::make_shared<std::promise<void>>();
  auto future = returned->get_future();
  std::thread([returned, call = std::move(call)] {
    call();
    returned->set_value();
  }).detach();
  return future.wait_for(kThreadTestPatience) == std::future_status::ready;
}

/// Called on a thread: the promise is kept when that thread ends.
inline void signalAtThreadEnd(std::promise<void> ended) {
  struct Sentinel {
    std::promise<void> ended;
    ~Sentinel() { ended.set_value(); }
  };
  thread_local Sentinel sentinel = {std::move(ended)};
  static_cast<void>(sentinel);
}

/// The promise is kept when the last copy of the result is gone.
inline std::shared_ptr<void> signalWhenDropped(std::promise<void>& dropped) {
  return {static_cast<void*>(&dropped), [&dropped](void*) { dropped.set_value(); }};
}

}  // namespace quorvance
