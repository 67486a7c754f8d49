// Takes personal data out of exchanges, so that a capture can be handed on.
//
// An allow-list: what the contract itself says (its keys, its words), protocol keys and harmless
// numbers stay; everything else becomes a stand-in. A stand-in is the same wherever the value is,
// be it percent-encoded or inside of JSON that stands in a text, so what belongs together still
// does. It keeps the shape that the contract asks for: a UUID stays one, a number stays a number.
#pragma once

#include <set>
#include <string>
#include <string_view>

#include "apps/risk_server/contract/contract.h"
#include "apps/risk_server/exchanges/exchange.h"

namespace risk_server {

// Immutable: any thread.
class Masker {
 public:
  // Nobody who has not the key can tell a value from its stand-in. `contract` must outlive the
  // masker.
  Masker(const Contract& contract, std::string key);

  // The body as JSON; what is no JSON becomes a text that tells its size.
  std::string maskedBody(const std::string& body) const;

  // The exchange with masked bodies, facts, path and reasons.
  Exchange masked(const Exchange& exchange) const;
  // As exchangeSummary(), of the masked exchange with the sizes of its own bodies.
  Json maskedSummary(const Exchange& exchange, const ReplyOutcome& outcome) const;

 private:
  Exchange withoutBodies(const Exchange& exchange) const;
  Json maskedValue(const std::string& key, const Json& value, int depth) const;
  Json maskedObject(const Json& object, int depth) const;
  std::string maskedText(const std::string& key, const std::string& text, int depth) const;
  std::string maskedKey(const std::string& key) const;
  std::string maskedPath(const std::string& path) const;
  std::string maskedReason(const std::string& reason) const;
  Json maskedNumber(const Json& number) const;
  std::string standIn(std::string_view value) const;
  std::string uuidFor(std::string_view value) const;
  std::string digest(std::string_view value) const;

  const Contract& contract_;
  const std::string key_;
  std::set<std::string> keys_;   // that may stay
  std::set<std::string> words_;  // texts that may stay
};

}  // namespace risk_server
