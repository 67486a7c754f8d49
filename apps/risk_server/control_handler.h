// What the control path ("/control/...") answers: decisions only, no sockets.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "apps/risk_server/contract/contract.h"
#include "apps/risk_server/exchanges/exchange_log.h"
#include "apps/risk_server/faults/fault_list.h"
#include "apps/risk_server/http/http_listener.h"
#include "apps/risk_server/service_handler.h"

namespace risk_server {

// Answered without a token too: it tells nothing but that the server is there.
inline constexpr std::string_view kHealthPath = "/control/health";

// Any thread; what it refers to must outlive it. Who may ask is the guard's business.
class ControlHandler {
 public:
  // Must not block.
  using Restart = std::function<void(std::chrono::milliseconds downTime)>;

  ControlHandler(const Contract& contract, ServiceHandler& services, FaultList& faults,
                 const ExchangeLog& log, Restart restart);

  HttpReply answer(const HttpRequest& request);

 private:
  struct Operation;
  static const std::vector<Operation>& operations();

  HttpReply showTally(const std::string& body);
  HttpReply showHealth(const std::string& body);
  HttpReply replaceConfiguration(const std::string& body);
  HttpReply replaceRules(const std::string& body);
  HttpReply showFaults(const std::string& body);
  HttpReply replaceFaults(const std::string& body);
  HttpReply clearFaults(const std::string& body);
  HttpReply restart(const std::string& body);

  const Contract& contract_;
  ServiceHandler& services_;
  FaultList& faults_;
  const ExchangeLog& log_;
  const Restart restart_;
};

}  // namespace risk_server
