// What the control path ("/control/...") answers about the server's settings: decisions only, no
// sockets. console_server/exchanges_handler.h answers about its exchanges.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/risk_server/console_server/server_state.h"
#include "apps/risk_server/contract/contract.h"
#include "apps/risk_server/exchanges/change_signal.h"
#include "apps/risk_server/exchanges/exchange_log.h"
#include "apps/risk_server/faults/fault_list.h"
#include "apps/risk_server/http/http_listener.h"
#include "apps/risk_server/service_handler.h"

namespace risk_server {

// Answered without a token too: it tells nothing but that the server is there.
inline constexpr std::string_view kHealthPath = "/control/health";

// Any thread; what it refers to must outlive it. Who may ask is the guard's business.
//
// What can be replaced has a version: GET tells it as the ETag, POST replies with the new one, and
// with the header If-Match replaces that version only, else it is refused with 412.
class ControlHandler {
 public:
  // Must not block.
  using Restart = std::function<void(std::chrono::milliseconds downTime)>;

  struct Parts {
    const Contract& contract;
    ServiceHandler& services;
    FaultList& faults;
    const ExchangeLog& log;
    const ServerState& state;
    ChangeSignal& signal;
  };
  ControlHandler(const Parts& parts, Restart restart);

  HttpReply answer(const HttpRequest& request);

 private:
  struct Operation;
  static const std::vector<Operation>& operations();

  HttpReply showTally(const HttpRequest& request);
  HttpReply showHealth(const HttpRequest& request);
  HttpReply showState(const HttpRequest& request);
  HttpReply showContract(const HttpRequest& request);
  HttpReply showConfiguration(const HttpRequest& request);
  HttpReply replaceConfiguration(const HttpRequest& request);
  HttpReply showRules(const HttpRequest& request);
  HttpReply replaceRules(const HttpRequest& request);
  HttpReply checkRules(const HttpRequest& request);
  HttpReply showFaults(const HttpRequest& request);
  HttpReply replaceFaults(const HttpRequest& request);
  HttpReply checkFaults(const HttpRequest& request);
  HttpReply clearFaults(const HttpRequest& request);
  HttpReply restart(const HttpRequest& request);

  HttpReply replyToReplacement(std::optional<std::uint64_t> newVersion);

  const Parts parts_;
  const Restart restart_;
};

}  // namespace risk_server
