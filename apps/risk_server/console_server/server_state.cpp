#include "apps/risk_server/console_server/server_state.h"

#include <utility>

#include "apps/risk_server/http/text_codecs.h"
#include "apps/risk_server/verdicts/signed_verdict.h"

namespace risk_server {
namespace {

constexpr std::size_t kRunBytes = 6;

Json rulesState(const RulesState& state) {
  Json rules = Json::object();
  rules["version"] = state.version;
  rules["hits"] = state.hits;
  rules["undecided"] = state.undecided;
  return rules;
}

}  // namespace

ServerState::ServerState(const ServiceHandler& services, const FaultList& faults,
                         const ExchangeLog& log, Listener listener)
    : services_(services),
      faults_(faults),
      log_(log),
      listener_(std::move(listener)),
      run_(hexText(randomSigningKey().substr(0, kRunBytes))) {}

Json ServerState::asJson() const {
  Json faults = Json::object();
  faults["version"] = faults_.version();
  faults["list"] = faults_.asJson();
  Json configuration = Json::object();
  configuration["version"] = services_.configuration().version;
  const Tally tally = log_.tally();
  std::uint64_t calls = 0;
  for (const auto& [path, count] : tally.calls) calls += count;
  Json state = Json::object();
  state["run"] = run_;
  state["url"] = listener_.url();
  state["serving"] = listener_.isUp();
  state["rules"] = rulesState(services_.rules().state());
  state["faults"] = std::move(faults);
  state["configuration"] = std::move(configuration);
  state["calls"] = calls;
  state["refused"] = tally.refused;
  return state;
}

}  // namespace risk_server
