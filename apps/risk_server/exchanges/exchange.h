// One call as the risk server saw it, and what became of its reply.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/risk_server/contract/mismatch.h"
#include "apps/risk_server/http/reply_delivery.h"
#include "apps/risk_server/server_json.h"

namespace risk_server {

// A connection that a fault on demand closed has no method and no path, and is no call.
struct Exchange {
  std::uint64_t id = 0;       // from 1, in the order of the log; 0 before it is recorded
  std::int64_t time = 0;      // of the decision, milliseconds since 1970
  std::int64_t received = 0;  // of its first byte, milliseconds since 1970
  std::string method;
  std::string path;  // the request target as it came, nothing decoded
  std::string contentType;
  std::string request;  // the body's bytes
  int status = 0;       // 0 when a fault on demand lets no reply go out
  std::string reply;
  std::string fault;                 // why the call was refused; empty when it was accepted
  std::vector<Mismatch> violations;  // everything in the body that breaks the contract
  std::string faultInjected;         // the name of the fault that was applied; empty for none
  std::optional<int> risk;           // the verdict, whatever a fault made of its reply
  std::optional<std::size_t> rule;   // the index of the rule that gave it
  Json facts;                        // see exchange_facts.h
};

// What became of a reply; the exchange itself is finished before.
struct ReplyOutcome {
  std::optional<Delivery> delivery;  // absent while it is under way
  std::int64_t replied = 0;          // milliseconds since 1970
  std::int64_t took = 0;             // microseconds from the request's first byte to this
};

// One line of the log: "request" is the body as JSON, or "requestText" when it is no JSON.
// "requestBytes" and "replyBytes" (base64url) stand beside them where these would not give back the
// very bytes. A key that was there once stays: keys are only added.
Json exchangeToJson(const Exchange& exchange);

// The line with "replied", "took", "delivery" and "facts" behind it.
Json exchangeToJson(const Exchange& exchange, const ReplyOutcome& outcome);

// What a list of exchanges shows: the line without the bodies, with their sizes and the facts.
Json exchangeSummary(const Exchange& exchange, const ReplyOutcome& outcome);

}  // namespace risk_server
