#include "apps/risk_server/service_handler.h"

#include <chrono>
#include <exception>
#include <utility>

#include "apps/risk_server/http/json_reply.h"
#include "apps/risk_server/http/text_codecs.h"
#include "apps/risk_server/verdicts/signed_verdict.h"

namespace risk_server {
namespace {

// Of a reply that a fault made: it may be huge, and is known.
constexpr std::size_t kMaxLoggedFaultReplyBytes = 4096;

std::int64_t millisecondsNow() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

HttpReply deviceReply(const Json& body, const std::string& key) {
  // A contract of the user's own need not ask for the vendor identifier.
  const std::string vendor = findText(body, "device_data.uuid").value_or("");
  Json device = Json::object();
  device["deviceID"] = deviceIdentifier(vendor, key);
  return acceptedReply(device);
}

Exchange exchangeOf(const HttpRequest& request, const HttpReply& reply, const std::string& fault) {
  Exchange exchange;
  exchange.time = millisecondsNow();
  exchange.method = request.method;
  exchange.path = request.target;
  for (const std::string& type : request.headersNamed("Content-Type")) {
    exchange.contentType += (exchange.contentType.empty() ? "" : ", ") + type;
  }
  exchange.request = request.body;
  exchange.status = reply.status;
  exchange.reply = reply.body;
  exchange.fault = fault;
  return exchange;
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

struct ServiceHandler::Outcome {
  HttpReply reply;
  std::string fault;  // why the call is refused
};

ServiceHandler::ServiceHandler(const Contract& contract, Json configuration, VerdictRules rules,
                               std::string signingKey, FaultList& faults, ExchangeLog& log)
    : contract_(contract), signingKey_(std::move(signingKey)), faults_(faults), log_(log) {
  setConfiguration(std::move(configuration));
  setRules(std::move(rules));
}

HttpReply ServiceHandler::answer(const HttpRequest& request) {
  Outcome outcome;
  try {
    outcome = answerService(request);
  } catch (const std::exception& error) {
    outcome.fault = std::string("the server failed: ") + error.what();
    outcome.reply = refusedReply(500, outcome.fault);
  }
  // No fault is applied to what is no whole request: its path is not known for sure.
  const auto fault = request.fault.empty() ? faults_.applyToCall(request.target) : nullptr;
  if (fault) outcome.reply = replyUnderFault(*fault, std::move(outcome.reply));
  Exchange exchange = exchangeOf(request, outcome.reply, outcome.fault);
  if (fault) noteFault(exchange, *fault);
  log_.record(std::move(exchange));
  return std::move(outcome.reply);
}

bool ServiceHandler::admitConnection() {
  const auto fault = faults_.applyToConnection();
  if (!fault) return true;
  Exchange exchange;
  exchange.time = millisecondsNow();
  exchange.faultInjected = fault->name;
  log_.record(std::move(exchange));
  return false;
}

ServiceHandler::Outcome ServiceHandler::answerService(const HttpRequest& request) {
  const auto refusal = [](int status, const std::string& fault, const std::string& allow = {}) {
    return Outcome{refusedReply(status, fault, allow), fault};
  };
  const ServiceCall* call = contract_.find(request.target);
  const bool wrongMethod = call != nullptr && request.method != "POST";
  if (!request.fault.empty() && !wrongMethod) return refusal(request.faultStatus, request.fault);
  if (call == nullptr) return refusal(404, contract_.reasonForUnknown(request.target));
  if (wrongMethod) {
    return refusal(405, "method " + request.method + ": only POST is expected", "POST");
  }
  if (auto fault = contract_.contentTypeFault(request.headersNamed("Content-Type")))
    return refusal(400, *fault);
  const ParsedJson body = parseServerJson(request.body);
  if (!body.value) return refusal(400, "the body is no JSON: " + body.fault);
  if (!body.value->is_object()) {
    return refusal(400, "the body: expected an object, got " + quoteForMessage(*body.value));
  }
  if (const auto mismatch = call->body->firstMismatchOf(*body.value))
    return refusal(400, mismatch->text());
  return {accept(request.target, *call, *body.value), ""};
}

HttpReply ServiceHandler::accept(const std::string& path, const ServiceCall& call,
                                 const Json& body) {
  switch (call.reply) {
    case ReplyKind::kAccepted:
      return acceptedReply("OK");
    case ReplyKind::kConfiguration:
      return jsonReply(*configuration());
    case ReplyKind::kDeviceIdentifier:
      return deviceReply(body, signingKey_);
    case ReplyKind::kVerdict:
      return verdictOn(path, body);
  }
  return refusedReply(500, "no reply of that kind");
}

HttpReply ServiceHandler::verdictOn(const std::string& path, const Json& body) {
  VerdictQuestion question;
  question.checkpoint = findText(body, "keys.checkpoint").value_or("");
  question.user = percentDecode(findText(body, "keys.user_id").value_or(""));
  question.checkpointObject = findMember(body, question.checkpoint);
  question.call = countVerdict(path, question.checkpoint);
  Verdict verdict;
  verdict.risk = rules()->decide(question);
  verdict.requestId = findText(body, "keys.requestID").value_or("");
  verdict.userId = question.user;
  verdict.issuedAt = millisecondsNow() / 1000;
  Json reply = Json::object();
  reply["risk"] = verdict.risk;
  reply["signedRisk"] = signVerdict(verdict, signingKey_);
  reply["requestID"] = verdict.requestId;
  return jsonReply(reply);
}

std::uint64_t ServiceHandler::countVerdict(const std::string& path, const std::string& checkpoint) {
  const std::lock_guard lock(mutex_);
  const auto key = std::make_pair(path, checkpoint);
  // A contract of the user's own may allow any word: those beyond the bound count as first calls.
  if (verdicts_.size() >= kMaxCountedVerdicts && !verdicts_.contains(key)) return 1;
  return ++verdicts_[key];
}

void ServiceHandler::setConfiguration(Json configuration) {
  if (!configuration.is_object()) {
    throw InputError("the configuration: expected an object, got " +
                     quoteForMessage(configuration));
  }
  auto replacement = std::make_shared<const Json>(std::move(configuration));
  const std::lock_guard lock(mutex_);
  configuration_ = std::move(replacement);
}

void ServiceHandler::setRules(VerdictRules rules) {
  auto replacement = std::make_shared<const VerdictRules>(std::move(rules));
  const std::lock_guard lock(mutex_);
  rules_ = std::move(replacement);
  verdicts_.clear();
}

std::shared_ptr<const Json> ServiceHandler::configuration() const {
  const std::lock_guard lock(mutex_);
  return configuration_;
}

std::shared_ptr<const VerdictRules> ServiceHandler::rules() const {
  const std::lock_guard lock(mutex_);
  return rules_;
}

}  // namespace risk_server
