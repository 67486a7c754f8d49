#include "apps/risk_server/control_handler.h"

#include <exception>
#include <utility>

#include "apps/risk_server/faults/fault_reader.h"
#include "apps/risk_server/http/json_reply.h"

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

}  // namespace

struct ControlHandler::Operation {
  std::string_view path;
  std::string_view method;
  HttpReply (ControlHandler::*answer)(const std::string& body);
};

const std::vector<ControlHandler::Operation>& ControlHandler::operations() {
  static const std::vector<Operation> kOperations = {
      {"/control/tally", "GET", &ControlHandler::showTally},
      {kHealthPath, "GET", &ControlHandler::showHealth},
      {"/control/config", "POST", &ControlHandler::replaceConfiguration},
      {"/control/rules", "POST", &ControlHandler::replaceRules},
      {"/control/faults", "GET", &ControlHandler::showFaults},
      {"/control/faults", "POST", &ControlHandler::replaceFaults},
      {"/control/faults", "DELETE", &ControlHandler::clearFaults},
      {"/control/restart", "POST", &ControlHandler::restart},
  };
  return kOperations;
}

ControlHandler::ControlHandler(const Contract& contract, ServiceHandler& services,
                               FaultList& faults, const ExchangeLog& log, Restart restart)
    : contract_(contract),
      services_(services),
      faults_(faults),
      log_(log),
      restart_(std::move(restart)) {}

HttpReply ControlHandler::answer(const HttpRequest& request) {
  if (!request.fault.empty()) return refusedReply(request.faultStatus, request.fault);
  std::string allowed;
  for (const Operation& operation : operations()) {
    if (operation.path != request.target) continue;
    allowed += (allowed.empty() ? "" : ", ") + std::string(operation.method);
    if (operation.method != request.method) continue;
    try {
      return (this->*operation.answer)(request.body);
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

HttpReply ControlHandler::showTally(const std::string& /*body*/) {
  const Tally tally = log_.tally();
  Json calls = Json::object();
  for (const auto& [path, count] : tally.calls) calls[path] = count;
  Json json = Json::object();
  json["calls"] = std::move(calls);
  json["refused"] = tally.refused;
  return jsonReply(json);
}

HttpReply ControlHandler::showHealth(const std::string& /*body*/) {
  Json health = Json::object();
  health["status"] = "ready";
  return jsonReply(health);
}

HttpReply ControlHandler::replaceConfiguration(const std::string& body) {
  services_.setConfiguration(readServerJson(body, kNameOfBody));
  return acceptedReply("OK");
}

HttpReply ControlHandler::replaceRules(const std::string& body) {
  services_.setRules(VerdictRules::fromJson(readServerJson(body, kNameOfBody)));
  return acceptedReply("OK");
}

HttpReply ControlHandler::showFaults(const std::string& /*body*/) {
  return jsonReply(faults_.asJson());
}

HttpReply ControlHandler::replaceFaults(const std::string& body) {
  faults_.replace(readFaults(readServerJson(body, kNameOfBody), contract_));
  return acceptedReply("OK");
}

HttpReply ControlHandler::clearFaults(const std::string& /*body*/) {
  faults_.replace({});
  return acceptedReply("OK");
}

HttpReply ControlHandler::restart(const std::string& body) {
  restart_(downTimeFrom(body));
  return acceptedReply("OK");
}

}  // namespace risk_server
