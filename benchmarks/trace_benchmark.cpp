// What tracing costs the thread that is traced: aim at most 400 ns enabled and 5 ns disabled for a
// start and its end.

#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "diagnostics/operation_trace.h"
#include "platform/testing/test_world.h"
#include "quorvance/platform/linux_platform.h"

namespace quorvance {
namespace {

struct TracedState {
  explicit TracedState(bool isEnabled) {
    SdkConfig config;
    config.tracingDataQvData->levelQvManager = isEnabled;
    config.tracingDataQvData->maxTraceData = 100'000'000;
    state->replaceSdkConfig(config);
  }

  TestWorld world;
  // The true clock: its reading is a part of the cost.
  std::shared_ptr<WallClock> clock = makeLinuxPlatform().clock;
  std::shared_ptr<InnerQuorvanceData> state =
      std::make_shared<InnerQuorvanceData>(clock, world.store, world.identity);
  TracingManager tracing{state, std::make_shared<SystemTexts>(world.environment)};
};

TracedState& tracedState() {
  static auto* const state = new TracedState(true);
  return *state;
}

TracedState& untracedState() {
  static auto* const state = new TracedState(false);
  return *state;
}

void traceOnce(TracedState& traced) {
  OperationTrace trace(traced.tracing, "getRiskForCheckPoint",
                       [] { return std::vector<std::string>{"{\"checkpoint_type\":\"LAUNCH\"}"}; });
  benchmark::DoNotOptimize(trace);
}

// The buffer is emptied whenever it holds `range` entries, outside of the measured time.
void startAndEndEnabled(benchmark::State& state) {
  TracedState& traced = tracedState();
  const auto most = static_cast<std::size_t>(state.range(0));
  std::size_t held = 0;
  for (auto _ : state) {
    traceOnce(traced);
    held += 2;
    if (held >= most) {
      state.PauseTiming();
      if (state.thread_index() == 0) traced.tracing.clear();
      held = 0;
      state.ResumeTiming();
    }
  }
  if (state.thread_index() == 0) traced.tracing.clear();
}
BENCHMARK(startAndEndEnabled)->Arg(1000)->Arg(100'000)->Threads(1)->Threads(4);

void startAndEndDisabled(benchmark::State& state) {
  TracedState& traced = untracedState();
  for (auto _ : state) traceOnce(traced);
}
BENCHMARK(startAndEndDisabled)->Threads(1)->Threads(4);

void startAndEndInAFullBuffer(benchmark::State& state) {
  TestWorld world;
  const auto inner = std::make_shared<InnerQuorvanceData>(world.time, world.store, world.identity);
  SdkConfig config;
  config.tracingDataQvData->maxTraceData = 1000;
  inner->replaceSdkConfig(config);
  TracingManager tracing(inner, std::make_shared<SystemTexts>(world.environment));
  for (int i = 0; i < 1001; ++i) tracing.traceStart(true, "full", {});
  for (auto _ : state) {
    auto record = tracing.traceStart(true, "getRiskForCheckPoint", {});
    tracing.traceEnd(true, record);
  }
}
BENCHMARK(startAndEndInAFullBuffer);

}  // namespace
}  // namespace quorvance
