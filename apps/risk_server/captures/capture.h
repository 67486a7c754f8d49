// Captures: exchanges that were written down, by this server or by any proxy.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "apps/risk_server/contract/contract.h"
#include "apps/risk_server/exchanges/exchange.h"

namespace risk_server {

struct CapturedExchange {
  Exchange exchange;
  ReplyOutcome outcome;
  std::string where;  // "line 3", "entry 3"
};

struct Capture {
  std::vector<CapturedExchange> exchanges;
  std::size_t skipped = 0;  // entries of a HAR that are no calls of the contract
};

// Reads the server's own log (JSON lines) or a HAR 1.2 file; which of them it is, the text tells.
// Every call is checked against the contract anew; a refusal that the log tells stays where the
// contract finds nothing. Exchanges are numbered from 1. Throws InputError naming the line or
// entry.
Capture readCapture(std::string_view text, const Contract& contract);

// Takes "risk" and "rule" of a line.
void takeVerdict(const Json& json, Exchange& exchange);

// Takes "delivery", "replied" and "took" of a line.
ReplyOutcome outcomeAt(const Json& json);

// Checks a call and fills in its facts, violations and fault.
void checkExchange(Exchange& exchange, const Contract& contract);

// What the page and a report show of one: {"row": exchangeSummary, "request", "reply"} with the
// very texts, or with "requestBytes" and "replyBytes" (base64url) where they are none.
Json captureEntry(const Exchange& exchange, const ReplyOutcome& outcome);

}  // namespace risk_server
