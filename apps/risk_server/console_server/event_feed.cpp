#include "apps/risk_server/console_server/event_feed.h"

#include <memory>
#include <utility>

#include "apps/risk_server/http/json_reply.h"
#include "apps/risk_server/http/request_target.h"

namespace risk_server {
namespace {

using Clock = std::chrono::steady_clock;

std::string eventText(const std::string& name, const std::string& id, const Json& data) {
  const std::string idLine = id.empty() ? "" : "id: " + id + "\n";
  return "event: " + name + "\n" + idLine + "data: " + dumpServerJson(data) + "\n\n";
}

Json gapData(const ExchangeChanges& changes) {
  Json data = Json::object();
  data["oldest"] = changes.oldest;
  return data;
}

}  // namespace

// One of the streams that may be open; given back when its reply is done with.
class EventFeed::Lease {
 public:
  explicit Lease(std::atomic<int>& streams)
      : streams_(streams), has_(++streams <= kMaxEventStreams) {}
  ~Lease() { --streams_; }
  Lease(const Lease&) = delete;
  Lease& operator=(const Lease&) = delete;
  bool has() const { return has_; }

 private:
  std::atomic<int>& streams_;
  const bool has_;
};

std::string EventFeed::idOf(std::uint64_t change) const {
  return state_.run() + ":" + std::to_string(change);
}

std::uint64_t EventFeed::changeFrom(const HttpRequest& request) const {
  std::string after = queryValue(request.target, "after").value_or("");
  const auto resumed = request.headersNamed("Last-Event-ID");
  if (!resumed.empty()) after = resumed.front();
  const std::string prefix = state_.run() + ":";
  if (!after.starts_with(prefix)) return 0;
  return numberFromText(after.substr(prefix.size())).value_or(0);
}

EventFeed::Reading EventFeed::readingFrom(const HttpRequest& request) const {
  return {queryValue(request.target, "masked") == "1", changeFrom(request), ""};
}

EventFeed::Batch EventFeed::batchFor(const Reading& reading) const {
  Batch batch{Json::array(), log_.changesAfter(reading.change, kMaxRowsInBatch)};
  for (const KeptExchange& kept : batch.changes.changed) {
    const Exchange& exchange = *kept.exchange;
    batch.rows.push_back(reading.isMasked ? masker_.maskedSummary(exchange, kept.outcome)
                                          : exchangeSummary(exchange, kept.outcome));
  }
  return batch;
}

HttpReply EventFeed::open(const HttpRequest& request) {
  const auto lease = std::make_shared<Lease>(streams_);
  if (!lease->has()) {
    HttpReply refusal = refusedReply(503, "too many streams are open; ask GET /control/exchanges");
    refusal.headers.emplace_back("Retry-After", "1");
    return refusal;
  }
  HttpReply reply;
  reply.headers.emplace_back("Content-Type", "text/event-stream");
  reply.stream = [this, lease, reading = readingFrom(request)](ReplySink& sink) {
    write(sink, reading);
  };
  return reply;
}

std::string EventFeed::nextEvents(Reading& reading) const {
  std::string events;
  Batch batch = batchFor(reading);
  if (batch.changes.hasGap) events += eventText("gap", "", gapData(batch.changes));
  if (batch.changes.last != reading.change) {
    Json data = Json::object();
    data["rows"] = std::move(batch.rows);
    data["oldest"] = batch.changes.oldest;
    reading.change = batch.changes.last;
    events += eventText("rows", idOf(reading.change), data);
  }
  const Json state = state_.asJson();
  if (std::string text = dumpServerJson(state); text != reading.state) {
    events += eventText("state", "", state);
    reading.state = std::move(text);
  }
  return events;
}

void EventFeed::write(ReplySink& sink, Reading reading) const {
  const ChangeSignal::Watcher watcher(signal_);
  for (;;) {
    watcher.clear();
    const std::string events = nextEvents(reading);
    if (!events.empty()) {
      if (!sink.send(events) || !sink.waitUntil(Clock::now() + kBatchInterval, -1)) return;
      continue;
    }
    const auto due = Clock::now() + kHeartbeatInterval;
    if (!sink.waitUntil(due, watcher.descriptor())) return;
    if (Clock::now() >= due && !sink.send(": nothing new\n\n")) return;
  }
}

HttpReply EventFeed::changes(const HttpRequest& request) const {
  Batch batch = batchFor(readingFrom(request));
  Json data = Json::object();
  data["after"] = idOf(batch.changes.last);
  data["more"] = batch.changes.hasMore;
  data["gap"] = batch.changes.hasGap;
  data["oldest"] = batch.changes.oldest;
  data["rows"] = std::move(batch.rows);
  data["state"] = state_.asJson();
  return jsonReply(data);
}

}  // namespace risk_server
