#include "apps/risk_server/control_handler.h"

#include <exception>
#include <utility>

#include "apps/risk_server/console_server/replay.h"
#include "apps/risk_server/faults/fault_reader.h"
#include "apps/risk_server/http/json_reply.h"
#include "apps/risk_server/http/request_target.h"

namespace risk_server {
namespace {

constexpr const char* kNameOfBody = "the body";

// The "downMs" of {"downMs": N}, 0 when it is left out.
std::chrono::milliseconds downTimeFrom(const std::string& body) {
  const Json given = readServerJson(body.empty() ? "{}" : body, kNameOfBody);
  if (!given.is_object()) {
    throw InputError("expected an object, got " + quoteForMessage(given));
  }
  std::chrono::milliseconds downTime{0};
  for (const auto& [key, value] : given.items()) {
    const auto most = static_cast<std::uint64_t>(kMaxDownTime.count());
    if (key != "downMs") throw InputError(key + ": not expected here");
    if (!value.is_number_unsigned() || value.get<std::uint64_t>() > most) {
      throw InputError("downMs: expected a number from 0 to " + std::to_string(most) + ", got " +
                       quoteForMessage(value));
    }
    downTime = std::chrono::milliseconds(value.get<std::uint64_t>());
  }
  return downTime;
}

// The version that a request insists on.
std::optional<std::uint64_t> wantedVersion(const HttpRequest& request) {
  const auto given = request.headersNamed("If-Match");
  if (given.empty()) return std::nullopt;
  const std::string& tag = given.front();
  const bool isQuoted = tag.size() > 2 && tag.front() == '"' && tag.back() == '"';
  const auto version =
      isQuoted ? numberFromText(std::string_view(tag).substr(1, tag.size() - 2)) : std::nullopt;
  if (!version) throw InputError("If-Match: expected the ETag of what is to be replaced");
  return version;
}

HttpReply withVersion(HttpReply reply, std::uint64_t version) {
  reply.headers.emplace_back("ETag", "\"" + std::to_string(version) + "\"");
  return reply;
}

}  // namespace

struct ControlHandler::Operation {
  std::string_view path;
  std::string_view method;
  HttpReply (ControlHandler::*answer)(const HttpRequest& request);
};

const std::vector<ControlHandler::Operation>& ControlHandler::operations() {
  static const std::vector<Operation> kOperations = {
      {"/control/tally", "GET", &ControlHandler::showTally},
      {kHealthPath, "GET", &ControlHandler::showHealth},
      {"/control/state", "GET", &ControlHandler::showState},
      {"/control/contract", "GET", &ControlHandler::showContract},
      {"/control/config", "GET", &ControlHandler::showConfiguration},
      {"/control/config", "POST", &ControlHandler::replaceConfiguration},
      {"/control/rules", "GET", &ControlHandler::showRules},
      {"/control/rules", "POST", &ControlHandler::replaceRules},
      {"/control/rules/check", "POST", &ControlHandler::checkRules},
      {"/control/faults", "GET", &ControlHandler::showFaults},
      {"/control/faults", "POST", &ControlHandler::replaceFaults},
      {"/control/faults", "DELETE", &ControlHandler::clearFaults},
      {"/control/faults/check", "POST", &ControlHandler::checkFaults},
      {"/control/restart", "POST", &ControlHandler::restart},
  };
  return kOperations;
}

ControlHandler::ControlHandler(const Parts& parts, Restart restart)
    : parts_(parts), restart_(std::move(restart)) {}

HttpReply ControlHandler::answer(const HttpRequest& request) {
  if (!request.fault.empty()) return refusedReply(request.faultStatus, request.fault);
  std::string allowed;
  for (const Operation& operation : operations()) {
    if (operation.path != request.target) continue;
    allowed += (allowed.empty() ? "" : ", ") + std::string(operation.method);
    if (operation.method != request.method) continue;
    try {
      return (this->*operation.answer)(request);
    } catch (const InputError& error) {
      return refusedReply(400, error.what());
    } catch (const std::exception& error) {
      return refusedReply(500, std::string("the server failed: ") + error.what());
    }
  }
  if (allowed.empty()) return refusedReply(404, "no control at \"" + request.target + "\"");
  return refusedReply(405, "method " + request.method + ": only " + allowed + " is expected",
                      allowed);
}

HttpReply ControlHandler::replyToReplacement(std::optional<std::uint64_t> newVersion) {
  if (!newVersion) return refusedReply(412, "If-Match: it was replaced meanwhile");
  parts_.signal.notify();
  return withVersion(acceptedReply("OK"), *newVersion);
}

HttpReply ControlHandler::showTally(const HttpRequest& /*request*/) {
  const Tally tally = parts_.log.tally();
  Json calls = Json::object();
  for (const auto& [path, count] : tally.calls) calls[path] = count;
  Json json = Json::object();
  json["calls"] = std::move(calls);
  json["refused"] = tally.refused;
  return jsonReply(json);
}

HttpReply ControlHandler::showHealth(const HttpRequest& /*request*/) {
  Json health = Json::object();
  health["status"] = "ready";
  return jsonReply(health);
}

HttpReply ControlHandler::showState(const HttpRequest& /*request*/) {
  return jsonReply(parts_.state.asJson());
}

HttpReply ControlHandler::showContract(const HttpRequest& /*request*/) {
  return jsonReply(parts_.contract.asJson());
}

HttpReply ControlHandler::showConfiguration(const HttpRequest& /*request*/) {
  const ConfigurationState state = parts_.services.configuration();
  return withVersion(jsonReply(*state.configuration), state.version);
}

HttpReply ControlHandler::replaceConfiguration(const HttpRequest& request) {
  Json configuration = readServerJson(request.body, kNameOfBody);
  return replyToReplacement(
      parts_.services.replaceConfiguration(std::move(configuration), wantedVersion(request)));
}

HttpReply ControlHandler::showRules(const HttpRequest& /*request*/) {
  const RulesState state = parts_.services.rules().state();
  return withVersion(jsonReply(state.rules->asJson()), state.version);
}

HttpReply ControlHandler::replaceRules(const HttpRequest& request) {
  VerdictRules rules = VerdictRules::fromJson(readServerJson(request.body, kNameOfBody));
  return replyToReplacement(
      parts_.services.rules().replace(std::move(rules), wantedVersion(request)));
}

HttpReply ControlHandler::checkRules(const HttpRequest& request) {
  VerdictRules rules = VerdictRules::fromJson(readServerJson(request.body, kNameOfBody));
  return jsonReply(replayRules(std::move(rules), parts_.log));
}

HttpReply ControlHandler::showFaults(const HttpRequest& /*request*/) {
  return withVersion(jsonReply(parts_.faults.asJson()), parts_.faults.version());
}

HttpReply ControlHandler::replaceFaults(const HttpRequest& request) {
  auto faults = readFaults(readServerJson(request.body, kNameOfBody), parts_.contract);
  return replyToReplacement(parts_.faults.replace(std::move(faults), wantedVersion(request)));
}

HttpReply ControlHandler::checkFaults(const HttpRequest& request) {
  auto faults = readFaults(readServerJson(request.body, kNameOfBody), parts_.contract);
  return jsonReply(replayFaults(std::move(faults), parts_.log));
}

HttpReply ControlHandler::clearFaults(const HttpRequest& request) {
  return replyToReplacement(parts_.faults.replace({}, wantedVersion(request)));
}

HttpReply ControlHandler::restart(const HttpRequest& request) {
  restart_(downTimeFrom(request.body));
  return acceptedReply("OK");
}

}  // namespace risk_server
