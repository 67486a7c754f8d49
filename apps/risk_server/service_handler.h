// What the risk server answers to service calls: decisions only, no sockets.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "apps/risk_server/contract/contract.h"
#include "apps/risk_server/exchanges/exchange_log.h"
#include "apps/risk_server/faults/fault_list.h"
#include "apps/risk_server/http/http_listener.h"
#include "apps/risk_server/verdicts/verdict_rules.h"

namespace risk_server {

// Verdicts are counted for this many pairs of path and checkpoint; the built-in contract has ten.
inline constexpr std::size_t kMaxCountedVerdicts = 1000;

// Any thread; mutex_ guards the configuration and the rules, which are replaced whole, and how
// often each was asked. What it refers to must outlive it.
class ServiceHandler {
 public:
  ServiceHandler(const Contract& contract, Json configuration, VerdictRules rules,
                 std::string signingKey, FaultList& faults, ExchangeLog& log);

  // Decides, applies a fault, and logs: all before the reply goes out. What a fault does to
  // the reply changes nothing of the decision, so a call counts though its reply is lost.
  HttpReply answer(const HttpRequest& request);

  // Whether a connection that was just accepted is served; one that is not is logged.
  bool admitConnection();

  void setConfiguration(Json configuration);
  // Verdicts are counted anew.
  void setRules(VerdictRules rules);

 private:
  struct Outcome;

  Outcome answerService(const HttpRequest& request);
  HttpReply accept(const std::string& path, const ServiceCall& call, const Json& body);
  HttpReply verdictOn(const std::string& path, const Json& body);
  std::uint64_t countVerdict(const std::string& path, const std::string& checkpoint);

  std::shared_ptr<const Json> configuration() const;
  std::shared_ptr<const VerdictRules> rules() const;

  const Contract& contract_;
  const std::string signingKey_;
  FaultList& faults_;
  ExchangeLog& log_;
  mutable std::mutex mutex_;
  std::shared_ptr<const Json> configuration_;
  std::shared_ptr<const VerdictRules> rules_;
  std::map<std::pair<std::string, std::string>, std::uint64_t> verdicts_;  // by path, checkpoint
};

}  // namespace risk_server
