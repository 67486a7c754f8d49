#include "apps/risk_server/service_handler.h"

#include <exception>
#include <utility>

#include "apps/risk_server/contract/call_check.h"
#include "apps/risk_server/exchanges/exchange_facts.h"
#include "apps/risk_server/http/json_reply.h"
#include "apps/risk_server/server_clock.h"
#include "apps/risk_server/verdicts/signed_verdict.h"

namespace risk_server {
namespace {

// Of a reply that a fault made: it may be huge, and is known.
constexpr std::size_t kMaxLoggedFaultReplyBytes = 4096;

HttpReply deviceReply(const Json& body, const std::string& key) {
  // A contract of the user's own need not ask for the vendor identifier.
  const std::string vendor = findText(body, "device_data.uuid").value_or("");
  Json device = Json::object();
  device["deviceID"] = deviceIdentifier(vendor, key);
  return acceptedReply(device);
}

Exchange exchangeOf(const HttpRequest& request) {
  Exchange exchange;
  exchange.received = request.received;
  exchange.method = request.method;
  exchange.path = request.target;
  for (const std::string& type : request.headersNamed("Content-Type")) {
    exchange.contentType += (exchange.contentType.empty() ? "" : ", ") + type;
  }
  exchange.request = request.body;
  return exchange;
}

void noteReply(Exchange& exchange, const HttpReply& reply) {
  exchange.time = millisecondsNow();
  exchange.status = reply.status;
  exchange.reply = reply.body;
}

void noteFault(Exchange& exchange, const Fault& fault) {
  exchange.faultInjected = fault.name;
  if (fault.delivery.sendsNothing()) {
    exchange.status = 0;
    exchange.reply.clear();
  } else if (exchange.reply.size() > kMaxLoggedFaultReplyBytes) {
    const std::size_t whole = exchange.reply.size();
    exchange.reply.resize(kMaxLoggedFaultReplyBytes);
    exchange.reply += "... (" + std::to_string(whole) + " bytes)";
  }
}

}  // namespace

ServiceHandler::ServiceHandler(const Contract& contract, Json configuration, VerdictRules rules,
                               std::string signingKey, FaultList& faults, ExchangeLog& log)
    : contract_(contract),
      signingKey_(std::move(signingKey)),
      faults_(faults),
      log_(log),
      rules_(std::move(rules)) {
  replaceConfiguration(std::move(configuration));
}

HttpReply ServiceHandler::answer(const HttpRequest& request) {
  Exchange exchange = exchangeOf(request);
  HttpReply reply;
  try {
    reply = answerService(request, exchange);
  } catch (const std::exception& error) {
    exchange.fault = std::string("the server failed: ") + error.what();
    reply = refusedReply(500, exchange.fault);
  }
  // No fault is applied to what is no whole request: its path is not known for sure.
  const auto fault = request.fault.empty() ? faults_.applyToCall(request.target) : nullptr;
  if (fault) reply = replyUnderFault(*fault, std::move(reply));
  noteReply(exchange, reply);
  if (fault) noteFault(exchange, *fault);
  const std::uint64_t id = log_.record(std::move(exchange));
  reply.whenSent = [this, id](const SentReply& sent) {
    log_.setOutcome(id, {sent.delivery, sent.time, sent.took});
  };
  return reply;
}

bool ServiceHandler::admitConnection() {
  const auto fault = faults_.applyToConnection();
  if (!fault) return true;
  Exchange exchange;
  exchange.time = exchange.received = millisecondsNow();
  exchange.faultInjected = fault->name;
  const std::uint64_t id = log_.record(std::move(exchange));
  log_.setOutcome(id, {Delivery::kClosed, millisecondsNow(), 0});
  return false;
}

HttpReply ServiceHandler::answerService(const HttpRequest& request, Exchange& exchange) {
  // A wrong method comes first: it says more than what the HTTP layer found.
  const bool wrongMethod = contract_.find(request.target) != nullptr && request.method != "POST";
  if (!request.fault.empty() && !wrongMethod) {
    exchange.fault = request.fault;
    return refusedReply(request.faultStatus, request.fault);
  }
  CheckedCall checked = checkCall(contract_, request.method, request.target,
                                  request.headersNamed("Content-Type"), request.body);
  if (checked.body) exchange.facts = factsOf(*checked.body);
  exchange.violations = std::move(checked.violations);
  exchange.fault = checked.fault;
  if (!checked.fault.empty()) return refusedReply(checked.status, checked.fault, checked.allow);
  return accept(*checked.call, *checked.body, exchange);
}

HttpReply ServiceHandler::accept(const ServiceCall& call, const Json& body, Exchange& exchange) {
  switch (call.reply) {
    case ReplyKind::kAccepted:
      return acceptedReply("OK");
    case ReplyKind::kConfiguration:
      return jsonReply(*configuration().configuration);
    case ReplyKind::kDeviceIdentifier:
      return deviceReply(body, signingKey_);
    case ReplyKind::kVerdict:
      return verdictOn(body, exchange);
  }
  return refusedReply(500, "no reply of that kind");
}

HttpReply ServiceHandler::verdictOn(const Json& body, Exchange& exchange) {
  const VerdictQuestion question = verdictQuestionOf(body);
  const VerdictDecision decision = rules_.decide(exchange.path, question);
  exchange.risk = decision.risk;
  exchange.rule = decision.rule;
  Verdict verdict;
  verdict.risk = decision.risk;
  verdict.requestId = findText(body, "keys.requestID").value_or("");
  verdict.userId = question.user;
  verdict.issuedAt = millisecondsNow() / 1000;
  Json reply = Json::object();
  reply["risk"] = verdict.risk;
  reply["signedRisk"] = signVerdict(verdict, signingKey_);
  reply["requestID"] = verdict.requestId;
  return jsonReply(reply);
}

std::optional<std::uint64_t> ServiceHandler::replaceConfiguration(
    Json configuration, std::optional<std::uint64_t> onlyVersion) {
  if (!configuration.is_object()) {
    throw InputError("the configuration: expected an object, got " +
                     quoteForMessage(configuration));
  }
  auto replacement = std::make_shared<const Json>(std::move(configuration));
  const std::lock_guard lock(mutex_);
  if (onlyVersion && *onlyVersion != configuration_.version) return std::nullopt;
  configuration_ = {std::move(replacement), configuration_.version + 1};
  return configuration_.version;
}

ConfigurationState ServiceHandler::configuration() const {
  const std::lock_guard lock(mutex_);
  return configuration_;
}

}  // namespace risk_server
