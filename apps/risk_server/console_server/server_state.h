// What the console shows of the server beside its exchanges.
#pragma once

#include <functional>
#include <string>

#include "apps/risk_server/exchanges/exchange_log.h"
#include "apps/risk_server/faults/fault_list.h"
#include "apps/risk_server/service_handler.h"

namespace risk_server {

// Any thread; what it refers to must outlive it.
class ServerState {
 public:
  struct Listener {
    std::function<std::string()> url;  // of the service calls
    std::function<bool()> isUp;
  };
  ServerState(const ServiceHandler& services, const FaultList& faults, const ExchangeLog& log,
              Listener listener);

  // {"run", "url", "serving", "rules": {"version", "hits", "undecided"}, "faults": {"version",
  // "list"}, "configuration": {"version"}, "calls", "refused"}
  Json asJson() const;

  std::string url() const { return listener_.url(); }

  // Another text for every process: numbers of exchanges and changes mean nothing in another run.
  const std::string& run() const { return run_; }

 private:
  const ServiceHandler& services_;
  const FaultList& faults_;
  const ExchangeLog& log_;
  const Listener listener_;
  const std::string run_;
};

}  // namespace risk_server
