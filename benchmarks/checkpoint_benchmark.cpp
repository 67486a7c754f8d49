// What a full transaction checkpoint costs the host's thread: aim at most 15 us without traces, at
// most 30 us with them, and at most 1.5 times the building of its body alone.

#include <benchmark/benchmark.h>

#include <memory>

#include "base/json.h"
#include "benchmarks/full_transaction.h"
#include "core/manager_core.h"
#include "platform/testing/test_world.h"

namespace quorvance {
namespace {

void bodyAlone(benchmark::State& state) {
  const auto transaction = fullTransaction();
  for (auto _ : state) benchmark::DoNotOptimize(transaction->getJson());
}
BENCHMARK(bodyAlone);

void checkpointCall(benchmark::State& state) {
  TestWorld world;
  const auto context = std::make_shared<Context>(world.platform());
  const auto manager = ManagerCore::make(context);
  manager->setup("http://risk.test/", "u1", nullptr);
  world.http->neverAnswer();
  SdkConfig config;
  config.tracingDataQvData->levelQvManager = state.range(0) != 0;
  config.tracingDataQvData->maxTraceData = 1'000'000'000;
  context->state->replaceSdkConfig(config);
  const auto transaction = fullTransaction();
  for (auto _ : state) {
    manager->getRiskForCheckPoint(*transaction, nullptr);
    state.PauseTiming();
    world.http->dropAll();
    world.time->dropAll();
    context->tracing->clear();
    state.ResumeTiming();
  }
}
BENCHMARK(checkpointCall)->ArgName("traced")->Arg(0)->Arg(1);

}  // namespace
}  // namespace quorvance
