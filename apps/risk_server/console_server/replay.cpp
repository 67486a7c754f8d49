#include "apps/risk_server/console_server/replay.h"

#include <utility>

#include "apps/risk_server/faults/fault_list.h"
#include "apps/risk_server/verdicts/counted_rules.h"

namespace risk_server {
namespace {

Json replayResult(std::size_t replayed, Json changes) {
  Json result = Json::object();
  result["replayed"] = replayed;
  result["changed"] = changes.size();
  result["changes"] = std::move(changes);
  return result;
}

}  // namespace

Json replayRules(VerdictRules rules, const ExchangeLog& log) {
  const auto verdicts = log.newest(
      kMaxReplayed, [](const Exchange& e) { return e.risk.has_value() && e.fault.empty(); });
  CountedRules counted(std::move(rules));
  Json changes = Json::array();
  for (const KeptExchange& kept : verdicts) {
    const Exchange& exchange = *kept.exchange;
    const ParsedJson body = parseServerJson(exchange.request);
    if (!body.value) continue;
    const VerdictDecision decision = counted.decide(exchange.path, verdictQuestionOf(*body.value));
    if (decision.risk == exchange.risk) continue;
    Json change = Json::object();
    change["id"] = exchange.id;
    change["from"] = *exchange.risk;
    change["to"] = decision.risk;
    if (decision.rule) change["rule"] = *decision.rule;
    changes.push_back(std::move(change));
  }
  Json result = replayResult(verdicts.size(), std::move(changes));
  result["hits"] = counted.state().hits;
  return result;
}

Json replayFaults(std::vector<Fault> faults, const ExchangeLog& log) {
  const auto calls = log.newest(kMaxReplayed, [](const Exchange& e) { return !e.path.empty(); });
  FaultList list;
  list.replace(std::move(faults));
  Json changes = Json::array();
  for (const KeptExchange& kept : calls) {
    const auto fault = list.applyToCall(kept.exchange->path);
    if (!fault) continue;
    Json change = Json::object();
    change["id"] = kept.exchange->id;
    change["fault"] = fault->name;
    changes.push_back(std::move(change));
  }
  Json result = replayResult(calls.size(), std::move(changes));
  result["list"] = list.asJson();
  return result;
}

}  // namespace risk_server
