// Captures of what is kept, and of files that the page hands over.
#pragma once

#include <string>

#include "apps/risk_server/console_server/server_state.h"
#include "apps/risk_server/contract/contract.h"
#include "apps/risk_server/exchanges/exchange_log.h"
#include "apps/risk_server/http/http_listener.h"
#include "apps/risk_server/masking/masker.h"

namespace risk_server {

//   GET, POST /control/export?format=jsonl|har[&plain=1]   everything, or {"ids": [...]}; masked
//                                                          unless "plain" says otherwise
//   POST /control/import[?masked=1]                        a capture: {"entries": [captureEntry],
//                                                          "skipped"}; nothing of it is kept
// Any thread; what it refers to must outlive it.
class CapturesHandler {
 public:
  struct Parts {
    const Contract& contract;
    const ExchangeLog& log;
    const ServerState& state;
    const Masker& masker;
  };
  explicit CapturesHandler(const Parts& parts) : parts_(parts) {}

  static bool answers(const std::string& path);
  HttpReply answer(const HttpRequest& request) const;

 private:
  HttpReply exportCapture(const HttpRequest& request) const;
  HttpReply importCapture(const HttpRequest& request) const;

  const Parts parts_;
};

}  // namespace risk_server
