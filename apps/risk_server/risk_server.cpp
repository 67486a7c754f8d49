#include "apps/risk_server/risk_server.h"

#include <utility>

#include "apps/risk_server/console_server/console_page.h"
#include "apps/risk_server/embedded_files.h"
#include "apps/risk_server/faults/fault_reader.h"
#include "apps/risk_server/http/json_reply.h"
#include "apps/risk_server/http/request_target.h"
#include "apps/risk_server/verdicts/signed_verdict.h"

namespace risk_server {
namespace {

// The page's connections are few and short, but for streams of events.
constexpr ListenerLimits kConsoleLimits{32, std::chrono::seconds(15)};

std::string urlOfPort(int port) { return "http://127.0.0.1:" + std::to_string(port) + "/"; }

}  // namespace

RiskServerOptions::RiskServerOptions()
    : contract(Contract::fromJson(readServerJson(embeddedContract(), "contract.json"))),
      configuration(readServerJson(embeddedConfig(), "default_config.json")),
      rules(VerdictRules::fromJson(readServerJson(embeddedRules(), "default_rules.json"))) {}

RiskServer::RiskServer(RiskServerOptions options)
    : contract_(std::move(options.contract)),
      guard_(std::move(options.guard)),
      log_(options.logFile, [this] { signal_.notify(); }),
      services_(contract_, std::move(options.configuration), std::move(options.rules),
                options.signingKey.empty() ? randomSigningKey() : std::move(options.signingKey),
                faults_, log_),
      state_(services_, faults_, log_,
             {[this] { return url(); }, [this] { return listener_.isUp(); }}),
      masker_(contract_, randomSigningKey()),
      feed_(log_, state_, masker_, signal_),
      control_({contract_, services_, faults_, log_, state_, signal_},
               [this](std::chrono::milliseconds downTime) { restart(downTime); }),
      exchanges_(log_, feed_, masker_),
      captures_({contract_, log_, state_, masker_}),
      wantedPort_(options.port),
      wantedConsolePort_(options.consolePort),
      listener_([this](const HttpRequest& request) { return answer(request); },
                [this] { return services_.admitConnection(); }, [this] { signal_.notify(); }),
      consoleListener_([this](const HttpRequest& request) { return answerConsole(request); },
                       [] { return true; }, {}, kConsoleLimits) {
  faults_.replace(std::move(options.faults));
}

RiskServer::~RiskServer() { stop(); }

void RiskServer::start() {
  listener_.start(wantedPort_);
  if (wantedConsolePort_) consoleListener_.start(*wantedConsolePort_);
}

void RiskServer::stop() {
  consoleListener_.stop();
  listener_.stop();
}

HttpReply RiskServer::answer(const HttpRequest& request) {
  if (leadsBelow(request.target, "control")) return answerControl(request, listener_.port());
  if (auto reply = replyToBrowser(request)) return std::move(*reply);
  return services_.answer(request);
}

// What a browser asks for by itself when somebody opens the server's URL: no call, so neither
// logged nor counted.
std::optional<HttpReply> RiskServer::replyToBrowser(const HttpRequest& request) const {
  if (request.method != "GET" && request.method != "HEAD") return std::nullopt;
  HttpReply reply;
  if (request.target == "/favicon.ico") {
    reply.status = 204;
    return reply;
  }
  if (request.target != "/") return std::nullopt;
  const std::string console = consoleUrl();
  if (console.empty()) return refusedReply(404, "the console is off (--console-port)");
  reply.status = 303;
  reply.headers.emplace_back("Location", console);
  return reply;
}

HttpReply RiskServer::answerControl(const HttpRequest& request, int port) {
  if (auto refusal = guard_.refusalOfOrigin(request, port)) return std::move(*refusal);
  const bool isOpen = request.target == kHealthPath;
  if (auto refusal = guard_.refusalOfToken(request); refusal && !isOpen) return std::move(*refusal);
  const std::string path = pathOfTarget(request.target);
  HttpReply reply = ExchangesHandler::answers(path)  ? exchanges_.answer(request)
                    : CapturesHandler::answers(path) ? captures_.answer(request)
                                                     : control_.answer(request);
  addSecurityHeaders(reply);
  return reply;
}

HttpReply RiskServer::answerConsole(const HttpRequest& request) {
  const int port = consoleListener_.port();
  if (leadsBelow(request.target, "control")) return answerControl(request, port);
  if (auto refusal = guard_.refusalOfOrigin(request, port)) return std::move(*refusal);
  HttpReply reply = consolePage(request);
  addSecurityHeaders(reply);
  return reply;
}

std::string RiskServer::url() const { return urlOfPort(listener_.port()); }

std::string RiskServer::consoleUrl() const {
  const int port = consoleListener_.port();
  return port == 0 ? "" : urlOfPort(port);
}

void RiskServer::setConfiguration(Json configuration) {
  services_.replaceConfiguration(std::move(configuration));
  signal_.notify();
}

void RiskServer::setRules(VerdictRules rules) {
  services_.rules().replace(std::move(rules));
  signal_.notify();
}

void RiskServer::setFaults(std::string_view json) {
  faults_.replace(readFaults(readServerJson(json, "the faults"), contract_));
  signal_.notify();
}

void RiskServer::clearFaults() {
  faults_.replace({});
  signal_.notify();
}

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
