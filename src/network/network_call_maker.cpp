#include "network/network_call_maker.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "base/collection.h"
#include "base/debug.h"
#include "base/out_of_memory.h"
#include "network/call_outcome.h"
#include "network/risk_verdict.h"
#include "network/url_text.h"

namespace quorvance {
namespace {

constexpr std::string_view kContentType = "application/json; charset=utf-8";
constexpr std::chrono::seconds kDefaultTimeout{60};
// Keeps the product below what a millisecond count can hold.
constexpr std::int64_t kMaxTimeoutSeconds = 1'000'000'000;

// Seconds as they stand; 0 and less are taken as the default, not as "never".
std::chrono::milliseconds timeoutFrom(const SdkConfig& config) {
  const auto seconds = config.timeoutConnection;
  if (!seconds || *seconds <= 0) return kDefaultTimeout;
  return std::chrono::seconds(std::min(*seconds, kMaxTimeoutSeconds));
}

PlatformError bodyFailure() {
  return {"QuorvanceJson", kParseFailureCode, "The request body cannot be JSON.", std::nullopt};
}

std::string responseText(const ResponceObject& response) {
  return "status " + std::to_string(response.statusCode.value_or(0)) + " of " +
         response.url.value_or("");
}

// One call on its way. Holds the maker weakly: a call outlives it, without its version and its
// report.
struct Call {
  std::shared_ptr<const CallServices> services;
  std::weak_ptr<NetworkCallMaker> maker;
  std::string url;
  Json params;
  std::string requestId;
  bool reportErrors = true;
  ReplyHandler handler;
  Task alongside;
  CallEntry entry;
  bool isTraced = false;
  std::optional<LoggingData> trace;

  Call() = default;
  ~Call() { discardJson(params); }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  void redact(const std::shared_ptr<Call>& self);
  void dispatch(const std::shared_ptr<Call>& self) const;
  void dispatchAlongside();
  void send(const std::shared_ptr<Call>& self);
  void receive(HttpReply reply, const std::shared_ptr<Call>& self);
  void finish(HttpReply reply);
  void report(const CallOutcome& outcome) const;
  void note(const ResponceObject& response) const;
  void drop() const;
};

void Call::redact(const std::shared_ptr<Call>& self) {
  if (!isCollectionEnabled()) return;  // switched off since: lost, and not for the hook to see
  if (services->redaction->apply(url, params)) return dispatch(self);
  dispatchAlongside();
  drop();
}

void Call::dispatch(const std::shared_ptr<Call>& self) const {
  services->http->dispatch(withinMemory([self] { self->send(self); }));
}

void Call::dispatchAlongside() {
  if (!alongside) return;
  hasMemoryFor([&] { services->http->dispatch(withinMemory(std::exchange(alongside, nullptr))); });
}

void Call::send(const std::shared_ptr<Call>& self) {
  if (!isCollectionEnabled()) return;  // switched off since: lost, as below
  // The network has its turn before what is dispatched here, whose want of memory costs that alone.
  dispatchAlongside();
  if (!parsesAsUrl(url)) return drop();
  if (!maker.expired()) setMember(params, "version", SystemTexts::sdkVersion());
  if (isInDebugMode()) debugPrint("jsonObj " + debugTextOf(params));
  HttpRequest request{url, std::string(kContentType), {}, kDefaultTimeout};
  request.timeout = timeoutFrom(*services->state->sdkConfig());
  isTraced = services->state->traceLevels().isOn(TraceLevel::sendingData);
  if (isTraced) trace = services->tracing->traceStart(true, "requestFromServer", {url});
  std::optional<std::string> body = writeJson(params);
  if (!body) {
    services->exceptions->logException(bodyFailure());
    return drop();
  }
  discardJson(params);
  request.body = std::move(*body);
  services->http->send(std::move(request), [self](HttpReply reply) {
    hasMemoryFor([&] { self->receive(std::move(reply), self); });
  });
}

void Call::receive(HttpReply reply, const std::shared_ptr<Call>& self) {
  auto kept = std::make_shared<HttpReply>(std::move(reply));
  services->backgroundQueue->post(WorkLane::completions,
                                  withinMemory([self, kept] { self->finish(std::move(*kept)); }));
}

// Reading the reply is a part of it: a large one holds up no other call's exchange. What there is
// no memory for of its report and its traces does not cost the answer.
void Call::finish(HttpReply reply) {
  CallOutcome outcome = decideOutcome(std::move(reply), std::move(requestId), std::move(url));
  ResponceObject& response = outcome.response;
  const JsonDiscarder discarder(response.output);
  note(response);
  hasMemoryFor([&] {
    if (outcome.isCommunicationError && reportErrors && !maker.expired()) report(outcome);
  });
  hasMemoryFor([&] {
    if (outcome.parseError) services->exceptions->logException(*outcome.parseError);
  });
  hasMemoryFor([&] {
    if (outcome.isPrinted && isInDebugMode()) debugPrint("Network Responce: " + response.text());
  });
  hasMemoryFor([&] { services->tracing->traceEnd(isTraced, trace); });
  handler.complete(response);
}

void Call::note(const ResponceObject& response) const {
  const std::int64_t now = services->state->now();
  if (response.succeeded()) return services->ledger->noteSuccess(now);
  services->ledger->noteFailure(now, reasonOf(response), response.statusCode, entry.service);
}

void Call::drop() const {
  services->ledger->noteFailure(services->state->now(), VerdictReason::cannotBeSent, std::nullopt,
                                entry.service);
  handler.drop();
}

void Call::report(const CallOutcome& outcome) const {
  const ResponceObject& response = outcome.response;
  ErrorLogData record = ErrorLogData::stamped(*services->texts, services->state->now());
  record.errorStack = response.url;
  if (outcome.transportError) {
    record.errorCode = 0;
    record.cause = outcome.transportError->text();
    record.errorType = record.cause;
  } else if (response.statusCode) {
    record.errorCode = response.statusCode;
    record.cause = responseText(response);
    record.errorType = "Connection";
  }
  services->reports->storeReport(std::move(record), ReportCategory::communicationError,
                                 entry.pending);
}

}  // namespace

struct ReplyHandler::Waiting {
  Waiting(Done whenDone, Dropped whenDropped, Dropped whenLost)
      : done(std::move(whenDone)), dropped(std::move(whenDropped)), lost(std::move(whenLost)) {}
  ~Waiting() { lose(); }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

  void lose() {
    dropped = nullptr;
    if (const Dropped tell = std::exchange(lost, nullptr)) hasMemoryFor(tell);
  }

  Done done;
  Dropped dropped;
  Dropped lost;
};

ReplyHandler::ReplyHandler(Done done, Dropped dropped, Dropped lost)
    : waiting_(std::make_shared<Waiting>(std::move(done), std::move(dropped), std::move(lost))) {}

void ReplyHandler::complete(ResponceObject& response) const {
  if (!waiting_) return;
  const Done done = std::exchange(waiting_->done, nullptr);
  if (done && !hasMemoryFor([&] { done(response); })) return waiting_->lose();
  waiting_->dropped = nullptr;
  waiting_->lost = nullptr;
}

void ReplyHandler::drop() const {
  if (!waiting_) return;
  waiting_->done = nullptr;
  waiting_->lost = nullptr;
  if (const Dropped tell = std::exchange(waiting_->dropped, nullptr)) tell();
}

NetworkCallMaker::NetworkCallMaker(CallServices services)
    : services_(std::make_shared<const CallServices>(std::move(services))) {}

void NetworkCallMaker::requestFromServer(std::string url, Json params, std::string requestId,
                                         std::optional<bool> reportErrors, ReplyHandler handler,
                                         Task alongside, CallEntry entry) {
  const JsonDiscarder discarder(params);
  // The handler goes with this call, which is a lost one.
  if (!isCollectionEnabled()) return;
  auto call = std::make_shared<Call>();
  call->services = services_;
  call->maker = weak_from_this();
  call->url = std::move(url);
  call->params = std::move(params);
  call->requestId = std::move(requestId);
  call->reportErrors = reportErrors.value_or(true);
  call->handler = std::move(handler);
  call->alongside = std::move(alongside);
  call->entry = std::move(entry);
  if (!services_->redaction) return call->dispatch(call);
  // A lane of the host's own code that keeps its order.
  services_->backgroundQueue->post(WorkLane::images, withinMemory([call] { call->redact(call); }));
}

}  // namespace quorvance
