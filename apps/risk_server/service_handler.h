// What the risk server answers to service calls: decisions only, no sockets.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "apps/risk_server/contract/contract.h"
#include "apps/risk_server/exchanges/exchange_log.h"
#include "apps/risk_server/faults/fault_list.h"
#include "apps/risk_server/http/http_listener.h"
#include "apps/risk_server/verdicts/counted_rules.h"

namespace risk_server {

struct ConfigurationState {
  std::shared_ptr<const Json> configuration;
  std::uint64_t version = 0;  // one more with each replacement
};

// Any thread; mutex_ guards the configuration, which is replaced whole. What it refers to must
// outlive it.
class ServiceHandler {
 public:
  ServiceHandler(const Contract& contract, Json configuration, VerdictRules rules,
                 std::string signingKey, FaultList& faults, ExchangeLog& log);

  // Decides, applies a fault, and logs: all before the reply goes out. What a fault does to
  // the reply changes nothing of the decision, so a call counts though its reply is lost.
  HttpReply answer(const HttpRequest& request);

  // Whether a connection that was just accepted is served; one that is not is logged.
  bool admitConnection();

  // Throws InputError when it is no object. Returns as CountedRules::replace().
  std::optional<std::uint64_t> replaceConfiguration(
      Json configuration, std::optional<std::uint64_t> onlyVersion = std::nullopt);
  ConfigurationState configuration() const;

  CountedRules& rules() { return rules_; }
  const CountedRules& rules() const { return rules_; }

 private:
  HttpReply answerService(const HttpRequest& request, Exchange& exchange);
  HttpReply accept(const ServiceCall& call, const Json& body, Exchange& exchange);
  HttpReply verdictOn(const Json& body, Exchange& exchange);

  const Contract& contract_;
  const std::string signingKey_;
  FaultList& faults_;
  ExchangeLog& log_;
  CountedRules rules_;
  mutable std::mutex mutex_;
  ConfigurationState configuration_;
};

}  // namespace risk_server
