#pragma once

#include <future>
#include <memory>
#include <utility>

namespace quorvance {

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
