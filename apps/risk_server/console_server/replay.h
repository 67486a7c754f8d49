// What other rules or faults would have made of the calls that are kept: dry runs.
#pragma once

#include <cstddef>
#include <vector>

#include "apps/risk_server/exchanges/exchange_log.h"
#include "apps/risk_server/faults/fault.h"
#include "apps/risk_server/verdicts/verdict_rules.h"

namespace risk_server {

// The newest accepted calls that a dry run goes through.
inline constexpr std::size_t kMaxReplayed = 200;

// {"replayed": how many verdicts, "changed": how many would differ,
//  "changes": [{"id", "from", "to", "rule"?}], "hits": [how often each rule would decide]}
// Calls are counted from the first one that is replayed, as they are when rules are replaced.
Json replayRules(VerdictRules rules, const ExchangeLog& log);

// {"replayed": how many calls, "changed": how many would get a fault,
//  "changes": [{"id", "fault"}], "list": as GET /control/faults}
Json replayFaults(std::vector<Fault> faults, const ExchangeLog& log);

}  // namespace risk_server
