#include "apps/risk_server/control_desk.h"

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

struct ControlDesk::Verb {
  std::string_view path;
  std::string_view method;
  HttpReply (ControlDesk::*answer)(const std::string& body);
};

const std::vector<ControlDesk::Verb>& ControlDesk::verbs() {
  static const std::vector<Verb> kVerbs = {
      {"/control/tally", "GET", &ControlDesk::showTally},
      {"/control/health", "GET", &ControlDesk::showHealth},
      {"/control/config", "POST", &ControlDesk::replaceConfiguration},
      {"/control/rules", "POST", &ControlDesk::replaceRules},
      {"/control/faults", "GET", &ControlDesk::showFaults},
      {"/control/faults", "POST", &ControlDesk::replaceFaults},
      {"/control/faults", "DELETE", &ControlDesk::clearFaults},
      {"/control/restart", "POST", &ControlDesk::restart},
  };
  return kVerbs;
}

ControlDesk::ControlDesk(const Contract& contract, ServiceDesk& services, FaultList& faults,
                         const ExchangeLog& log, Restart restart)
    : contract_(contract),
      services_(services),
      faults_(faults),
      log_(log),
      restart_(std::move(restart)) {}

HttpReply ControlDesk::answer(const HttpRequest& request) {
  if (!request.fault.empty()) return refusedReply(request.faultStatus, request.fault);
  std::string allowed;
  for (const Verb& verb : verbs()) {
    if (verb.path != request.target) continue;
    allowed += (allowed.empty() ? "" : ", ") + std::string(verb.method);
    if (verb.method != request.method) continue;
    try {
      return (this->*verb.answer)(request.body);
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

HttpReply ControlDesk::showTally(const std::string& /*body*/) {
  const Tally tally = log_.tally();
  Json calls = Json::object();
  for (const auto& [path, count] : tally.calls) calls[path] = count;
  Json json = Json::object();
  json["calls"] = std::move(calls);
  json["refused"] = tally.refused;
  return jsonReply(json);
}

HttpReply ControlDesk::showHealth(const std::string& /*body*/) {
  Json health = Json::object();
  health["status"] = "ready";
  return jsonReply(health);
}

HttpReply ControlDesk::replaceConfiguration(const std::string& body) {
  services_.setConfiguration(readServerJson(body, kNameOfBody));
  return acceptedReply("OK");
}

HttpReply ControlDesk::replaceRules(const std::string& body) {
  services_.setRules(VerdictRules::fromJson(readServerJson(body, kNameOfBody)));
  return acceptedReply("OK");
}

HttpReply ControlDesk::showFaults(const std::string& /*body*/) {
  return jsonReply(faults_.asJson());
}

HttpReply ControlDesk::replaceFaults(const std::string& body) {
  faults_.replace(readFaults(readServerJson(body, kNameOfBody), contract_));
  return acceptedReply("OK");
}

HttpReply ControlDesk::clearFaults(const std::string& /*body*/) {
  faults_.replace({});
  return acceptedReply("OK");
}

HttpReply ControlDesk::restart(const std::string& body) {
  restart_(downTimeFrom(body));
  return acceptedReply("OK");
}

}  // namespace risk_server
