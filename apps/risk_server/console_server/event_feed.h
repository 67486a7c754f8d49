// The exchanges and the server's state as they change, by Server-Sent Events, or asked for by
// number.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <string>

#include "apps/risk_server/console_server/server_state.h"
#include "apps/risk_server/exchanges/change_signal.h"
#include "apps/risk_server/exchanges/exchange_log.h"
#include "apps/risk_server/http/http_listener.h"
#include "apps/risk_server/masking/masker.h"

namespace risk_server {

// Further readers ask for changes once a second.
inline constexpr int kMaxEventStreams = 8;
inline constexpr std::size_t kMaxRowsInBatch = 1000;
// At most ten batches a second.
inline constexpr std::chrono::milliseconds kBatchInterval{100};
inline constexpr std::chrono::seconds kHeartbeatInterval{15};

// Events:
//   state   ServerState::asJson(), at first and whenever it changed
//   rows    {"rows": [exchangeSummary, ...], "oldest": ID}; what is older than "oldest" is gone
//   gap     {"oldest": ID}: exchanges were dropped before this reader got them
// The id of "rows" is "RUN:CHANGE"; a reader that hands it back gets what comes behind it, and
// everything when it is of another run. A comment is sent when nothing happens for long.
// Any thread; what it refers to must outlive it.
class EventFeed {
 public:
  EventFeed(const ExchangeLog& log, const ServerState& state, const Masker& masker,
            ChangeSignal& signal)
      : log_(log), state_(state), masker_(masker), signal_(signal) {}

  // The stream for "?after=RUN:CHANGE" or the header Last-Event-ID; 503 when there are too many.
  // "masked=1" takes personal data out of the rows.
  HttpReply open(const HttpRequest& request);
  // {"after": "RUN:CHANGE", "more": whether to ask again at once, "gap", "oldest", "rows", "state"}
  HttpReply changes(const HttpRequest& request) const;

 private:
  struct Batch {
    Json rows;
    ExchangeChanges changes;
  };
  class Lease;

  // How one reader reads, and how far it has come.
  struct Reading {
    bool isMasked = false;
    std::uint64_t change = 0;
    std::string state;  // that it was told last
  };

  Batch batchFor(const Reading& reading) const;
  Reading readingFrom(const HttpRequest& request) const;
  std::uint64_t changeFrom(const HttpRequest& request) const;
  std::string idOf(std::uint64_t change) const;
  std::string nextEvents(Reading& reading) const;
  void write(ReplySink& sink, Reading reading) const;

  const ExchangeLog& log_;
  const ServerState& state_;
  const Masker& masker_;
  ChangeSignal& signal_;
  std::atomic<int> streams_{0};
};

}  // namespace risk_server
