#include "apps/risk_server/risk_server.h"

#include <utility>

#include "apps/risk_server/embedded_files.h"
#include "apps/risk_server/faults/fault_reader.h"
#include "apps/risk_server/http/json_reply.h"
#include "apps/risk_server/verdicts/signed_verdict.h"

namespace risk_server {
namespace {

// What a browser asks for by itself when somebody opens the server's URL: no call, so neither
// logged nor counted.
std::optional<HttpReply> replyToBrowser(const HttpRequest& request) {
  if (request.method != "GET" && request.method != "HEAD") return std::nullopt;
  HttpReply reply;
  if (request.target == "/favicon.ico") {
    reply.status = 204;
    return reply;
  }
  if (request.target == "/")
    return refusedReply(404, "no page here; docs/risk_server.md tells more");
  return std::nullopt;
}

}  // namespace

RiskServerOptions::RiskServerOptions()
    : contract(Contract::fromJson(readServerJson(embeddedContract(), "contract.json"))),
      configuration(readServerJson(embeddedConfig(), "default_config.json")),
      rules(VerdictRules::fromJson(readServerJson(embeddedRules(), "default_rules.json"))) {}

RiskServer::RiskServer(RiskServerOptions options)
    : contract_(std::move(options.contract)),
      guard_(std::move(options.guard)),
      log_(options.logFile),
      services_(contract_, std::move(options.configuration), std::move(options.rules),
                options.signingKey.empty() ? randomSigningKey() : std::move(options.signingKey),
                faults_, log_),
      control_(contract_, services_, faults_, log_,
               [this](std::chrono::milliseconds downTime) { restart(downTime); }),
      wantedPort_(options.port),
      listener_([this](const HttpRequest& request) { return answer(request); },
                [this] { return services_.admitConnection(); }) {
  faults_.replace(std::move(options.faults));
}

RiskServer::~RiskServer() { stop(); }

void RiskServer::start() { listener_.start(wantedPort_); }

void RiskServer::stop() { listener_.stop(); }

HttpReply RiskServer::answer(const HttpRequest& request) {
  if (leadsBelow(request.target, "control")) return answerControl(request, listener_.port());
  if (auto reply = replyToBrowser(request)) return std::move(*reply);
  return services_.answer(request);
}

HttpReply RiskServer::answerControl(const HttpRequest& request, int port) {
  if (auto refusal = guard_.refusalOfOrigin(request, port)) return std::move(*refusal);
  const bool isOpen = request.target == kHealthPath;
  if (auto refusal = guard_.refusalOfToken(request); refusal && !isOpen) return std::move(*refusal);
  HttpReply reply = control_.answer(request);
  addSecurityHeaders(reply);
  return reply;
}

std::string RiskServer::url() const {
  return "http://127.0.0.1:" + std::to_string(listener_.port()) + "/";
}

void RiskServer::setConfiguration(Json configuration) {
  services_.setConfiguration(std::move(configuration));
}

void RiskServer::setRules(VerdictRules rules) { services_.setRules(std::move(rules)); }

void RiskServer::setFaults(std::string_view json) {
  faults_.replace(readFaults(readServerJson(json, "the faults"), contract_));
}

void RiskServer::clearFaults() { faults_.replace({}); }

Json RiskServer::faults() const { return faults_.asJson(); }

void RiskServer::goDown() { listener_.goDown(); }

void RiskServer::comeUp() { listener_.comeUp(); }

void RiskServer::restart(std::chrono::milliseconds downTime) { listener_.restart(downTime); }

bool RiskServer::waitUntilUp(std::chrono::milliseconds timeout) const {
  return listener_.waitUntilUp(timeout);
}

Tally RiskServer::tally() const { return log_.tally(); }

std::vector<Exchange> RiskServer::exchanges() const { return log_.kept(); }

bool RiskServer::waitForCalls(const std::string& path, std::uint64_t count,
                              std::chrono::milliseconds timeout) const {
  return log_.waitForCalls(path, count, timeout);
}

bool RiskServer::waitForRefusals(std::uint64_t count, std::chrono::milliseconds timeout) const {
  return log_.waitForRefusals(count, timeout);
}

bool RiskServer::waitForAppliedFaults(std::uint64_t count,
                                      std::chrono::milliseconds timeout) const {
  return log_.waitForAppliedFaults(count, timeout);
}

}  // namespace risk_server
