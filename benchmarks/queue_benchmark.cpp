// What handing work over costs the thread that does it, a host call's above all: aim at most 500 ns
// a task, and 2 ns for a debug line while debug mode is off.

#include <benchmark/benchmark.h>

#include <future>
#include <memory>

#include "base/debug.h"
#include "quorvance/platform/host_loop_queue.h"
#include "quorvance/platform/linux_platform.h"

namespace quorvance {
namespace {

constexpr int kPostsOfOneTurn = 1000;

// `post` takes a task. The queue is drained outside of the measured time.
template <class Post>
void postTurns(benchmark::State& state, Post post) {
  for (auto _ : state) {
    for (int i = 0; i < kPostsOfOneTurn; ++i) post([] { benchmark::ClobberMemory(); });
    state.PauseTiming();
    std::promise<void> drained;
    post([&] { drained.set_value(); });
    drained.get_future().wait();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kPostsOfOneTurn);
}

void postToBackground(benchmark::State& state) {
  const auto queue = makeLinuxPlatform().backgroundQueue;
  postTurns(state, [&](Task task) { queue->post(WorkLane::files, std::move(task)); });
}
BENCHMARK(postToBackground)->UseRealTime();

void postToMainThread(benchmark::State& state) {
  const auto queue = makeLinuxPlatform().mainQueue;
  postTurns(state, [&](Task task) { queue->post(std::move(task)); });
}
BENCHMARK(postToMainThread)->UseRealTime();

void dispatchToSession(benchmark::State& state) {
  const auto session = makeLinuxPlatform().http;
  postTurns(state, [&](Task task) { session->dispatch(std::move(task)); });
}
BENCHMARK(dispatchToSession)->UseRealTime();

// The same thread posts and runs: nobody contends for the mutex.
void postToHostLoopAndRun(benchmark::State& state) {
  HostLoopQueue queue;
  for (auto _ : state) {
    for (int i = 0; i < kPostsOfOneTurn; ++i) queue.post([] {});
    queue.dispatch();
  }
  state.SetItemsProcessed(state.iterations() * kPostsOfOneTurn);
}
BENCHMARK(postToHostLoopAndRun);

void debugLineWhileOff(benchmark::State& state) {
  for (auto _ : state) debugPrint("a line");
}
BENCHMARK(debugLineWhileOff);

}  // namespace
}  // namespace quorvance
