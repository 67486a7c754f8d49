// What the control path answers about the exchanges that are kept.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "apps/risk_server/console_server/event_feed.h"
#include "apps/risk_server/exchanges/exchange_log.h"
#include "apps/risk_server/http/http_listener.h"

namespace risk_server {

inline constexpr std::string_view kExchangesPath = "/control/exchanges";
inline constexpr std::string_view kEventsPath = "/control/events";

//   GET /control/events                     EventFeed::open
//   GET /control/exchanges                  EventFeed::changes
//   DELETE /control/exchanges               forgets what is kept; the log file and the tally stay
//   GET /control/exchanges/search?text=T    {"ids": [...]}: those with these bytes in a body
//   GET /control/exchanges/ID               exchangeSummary
//   GET /control/exchanges/ID/request       the bytes of the body; /reply alike
// With "?masked=1" personal data is taken out.
// Any thread; what it refers to must outlive it.
class ExchangesHandler {
 public:
  ExchangesHandler(ExchangeLog& log, EventFeed& feed, const Masker& masker)
      : log_(log), feed_(feed), masker_(masker) {}

  static bool answers(const std::string& path);
  HttpReply answer(const HttpRequest& request);

 private:
  HttpReply answerAll(const HttpRequest& request);
  HttpReply answerOne(const HttpRequest& request, const std::string& path) const;
  HttpReply search(const HttpRequest& request) const;

  ExchangeLog& log_;
  EventFeed& feed_;
  const Masker& masker_;
};

}  // namespace risk_server
