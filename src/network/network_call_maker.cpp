#include "network/network_call_maker.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "base/debug.h"
#include "network/call_outcome.h"
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
  bool isTraced = false;
  std::optional<LoggingData> trace;

  void send(const std::shared_ptr<Call>& self);
  void receive(HttpReply reply, const std::shared_ptr<Call>& self);
  void finish(HttpReply reply);
  void report(const CallOutcome& outcome) const;
};

void Call::send(const std::shared_ptr<Call>& self) {
  if (!parsesAsUrl(url)) return;
  if (!maker.expired()) setMember(params, "version", SystemTexts::sdkVersion());
  if (isInDebugMode()) debugPrint("jsonObj " + debugTextOf(params));
  HttpRequest request{url, std::string(kContentType), {}, kDefaultTimeout};
  request.timeout = timeoutFrom(*services->state->sdkConfig());
  isTraced = services->state->traceLevels().isOn(TraceLevel::sendingData);
  if (isTraced) trace = services->tracing->traceStart(true, "requestFromServer", {url});
  std::optional<std::string> body = writeJson(params);
  if (!body) {
    services->exceptions->logException(bodyFailure());
    return;
  }
  params = Json();
  request.body = std::move(*body);
  services->http->send(std::move(request),
                       [self](HttpReply reply) { self->receive(std::move(reply), self); });
}

void Call::receive(HttpReply reply, const std::shared_ptr<Call>& self) {
  auto kept = std::make_shared<HttpReply>(std::move(reply));
  services->backgroundQueue->post(WorkLane::completions,
                                  [self, kept] { self->finish(std::move(*kept)); });
}

// Reading the reply is a part of it: a large one holds up no other call's exchange.
void Call::finish(HttpReply reply) {
  CallOutcome outcome = decideOutcome(std::move(reply), std::move(requestId), std::move(url));
  if (outcome.isCommunicationError && reportErrors && !maker.expired()) report(outcome);
  if (outcome.parseError) services->exceptions->logException(*outcome.parseError);
  if (outcome.isPrinted && isInDebugMode()) {
    debugPrint("Network Responce: " + outcome.response.text());
  }
  services->tracing->traceEnd(isTraced, trace);
  handler.complete(std::move(outcome.response));
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
  services->reports->storeReport(std::move(record), ReportCategory::communicationError);
}

}  // namespace

struct ReplyHandler::Waiting {
  Waiting(Done whenDone, Dropped whenDropped)
      : done(std::move(whenDone)), dropped(std::move(whenDropped)) {}
  ~Waiting() {
    if (done && dropped) dropped();
  }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

  Done done;
  Dropped dropped;
};

ReplyHandler::ReplyHandler(Done done, Dropped dropped)
    : waiting_(std::make_shared<Waiting>(std::move(done), std::move(dropped))) {}

void ReplyHandler::complete(ResponceObject response) const {
  if (!waiting_) return;
  const Done done = std::exchange(waiting_->done, nullptr);
  if (done) done(std::move(response));
}

NetworkCallMaker::NetworkCallMaker(CallServices services)
    : services_(std::make_shared<const CallServices>(std::move(services))) {}

void NetworkCallMaker::requestFromServer(std::string url, Json params, std::string requestId,
                                         std::optional<bool> reportErrors, ReplyHandler handler) {
  auto call = std::make_shared<Call>();
  call->services = services_;
  call->maker = weak_from_this();
  call->url = std::move(url);
  call->params = std::move(params);
  call->requestId = std::move(requestId);
  call->reportErrors = reportErrors.value_or(true);
  call->handler = std::move(handler);
  services_->http->dispatch([call] { call->send(call); });
}

}  // namespace quorvance
