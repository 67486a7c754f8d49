// A local stand-in for the risk server, for the demo, for tests and for integrators.
//
// It knows nothing of the library that calls it: what it accepts is contract.json, what it answers
// are default_config.json and default_rules.json or files in their place. Start reading here;
// contract_reader.h explains the contract file, verdict_rules.h the rules file, fault_reader.h the
// faults that can be switched on.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/risk_server/console_server/captures_handler.h"
#include "apps/risk_server/console_server/event_feed.h"
#include "apps/risk_server/console_server/exchanges_handler.h"
#include "apps/risk_server/console_server/server_state.h"
#include "apps/risk_server/contract/contract.h"
#include "apps/risk_server/control_handler.h"
#include "apps/risk_server/exchanges/exchange_log.h"
#include "apps/risk_server/faults/fault_list.h"
#include "apps/risk_server/http/http_listener.h"
#include "apps/risk_server/http/request_guard.h"
#include "apps/risk_server/masking/masker.h"
#include "apps/risk_server/service_handler.h"
#include "apps/risk_server/verdicts/verdict_rules.h"

namespace risk_server {

// Built-in files unless replaced.
struct RiskServerOptions {
  RiskServerOptions();

  int port = 0;  // 0 takes a free one
  Contract contract;
  Json configuration;  // an object
  VerdictRules rules;
  std::vector<Fault> faults;  // from readFaults() with the same contract
  std::string signingKey;     // random bytes when empty
  std::optional<std::filesystem::path> logFile;
  GuardOptions guard;  // of the control path and the console
  // The console's own port, so that it stays when the server is down; 0 takes a free one. None: no
  // console.
  std::optional<int> consolePort;
};

// Life: made (the log file is open), started, any number of times down and up again, stopped; not
// started again. Any thread but for start() and stop(), which belong to the owner.
class RiskServer {
 public:
  // Throws InputError when the log file cannot be written.
  explicit RiskServer(RiskServerOptions options = {});
  ~RiskServer();  // stops
  RiskServer(const RiskServer&) = delete;
  RiskServer& operator=(const RiskServer&) = delete;

  // Listening when it returns. Throws std::system_error, for one when the port is taken.
  void start();
  // Replies that are under way go out first, but not those that a fault holds back.
  void stop();

  // "http://127.0.0.1:PORT/".
  std::string url() const;
  // Alike; empty when there is no console.
  std::string consoleUrl() const;

  // For the calls that come from now on. A configuration is any JSON object, since clients must
  // live with odd ones; anything else throws InputError.
  void setConfiguration(Json configuration);
  void setRules(VerdictRules rules);

  // Replaces all faults: the JSON of fault_reader.h, as in a file. Throws InputError and changes
  // nothing when it is wrong. Replies that are already held back stay so.
  void setFaults(std::string_view json);
  void clearFaults();
  // What GET /control/faults shows: each fault, its "calls" and to how many it was applied
  // ("struck").
  Json faults() const;

  // Down: connections are refused, those that are there end, the port is kept. goDown() lasts until
  // comeUp(); restart() returns at once, and lasts for the time, at most kMaxDownTime.
  void goDown();
  void comeUp();
  void restart(std::chrono::milliseconds downTime);
  bool waitUntilUp(std::chrono::milliseconds timeout) const;

  Tally tally() const;
  // The newest service calls, oldest first, within the bounds of exchange_log.h.
  std::vector<Exchange> exchanges() const;
  // Blocks until calls of the full path ("/qrsk-med/...") were accepted; false at the time-out.
  bool waitForCalls(const std::string& path, std::uint64_t count,
                    std::chrono::milliseconds timeout) const;
  bool waitForRefusals(std::uint64_t count, std::chrono::milliseconds timeout) const;
  // Blocks until faults were applied so often, whichever they were. A call or a fault is counted
  // when the reply was decided, which is before it was held back, sent or lost.
  bool waitForAppliedFaults(std::uint64_t count, std::chrono::milliseconds timeout) const;

 private:
  HttpReply answer(const HttpRequest& request);
  HttpReply answerControl(const HttpRequest& request, int port);
  HttpReply answerConsole(const HttpRequest& request);
  std::optional<HttpReply> replyToBrowser(const HttpRequest& request) const;

  const Contract contract_;
  const RequestGuard guard_;
  ChangeSignal signal_;
  ExchangeLog log_;
  FaultList faults_;
  ServiceHandler services_;
  const ServerState state_;
  const Masker masker_;
  EventFeed feed_;
  ControlHandler control_;
  ExchangesHandler exchanges_;
  CapturesHandler captures_;
  const int wantedPort_;
  const std::optional<int> wantedConsolePort_;
  // Last: their threads use what stands above.
  HttpListener listener_;
  HttpListener consoleListener_;
};

}  // namespace risk_server
