#include "apps/risk_server/faults/fault_reader.h"

#include <string>
#include <utility>

#include "apps/risk_server/faults/fault_keys.h"

namespace risk_server {
namespace {

// The keys of a fault's effects, and which of them is the one of its role.
struct Effects {
  std::string names;  // in the order of the file, joined by "+"
  std::string head;   // the last
  std::string body;
  std::string transfer;
};

void noteEffect(Effects& effects, KeyRole role, const std::string& key, const std::string& place) {
  if (role == KeyRole::kScope) return;
  std::string& slot = role == KeyRole::kHead   ? effects.head
                      : role == KeyRole::kBody ? effects.body
                                               : effects.transfer;
  if (role != KeyRole::kHead && !slot.empty()) {
    throw InputError(memberPlace(place, key) + ": cannot stand beside \"" + slot + "\"");
  }
  slot = key;
  effects.names += (effects.names.empty() ? "" : "+") + key;
}

Effects readKeys(Fault& fault, const std::string& place) {
  Effects effects;
  for (const auto& [key, value] : fault.given.items()) {
    const auto known = faultKeys().find(key);
    const std::string own = memberPlace(place, key);
    if (known == faultKeys().end()) throw InputError(own + ": no known part of a fault");
    noteEffect(effects, known->second.role, key, place);
    known->second.read(fault, value, own);
  }
  return effects;
}

void checkScope(const Fault& fault, const Contract& contract, const std::string& place) {
  if (!fault.given.contains("path")) throw InputError(place + ".path: missing");
  if (fault.path != kEveryPath && contract.find(fault.path) == nullptr) {
    throw InputError(place + ".path: " + contract.reasonForUnknown(fault.path));
  }
  if (fault.first <= fault.skip) throw InputError(place + ".first: all of them are skipped");
}

// A connection is neither of a path nor replied to.
void checkAtAccept(const Fault& fault, const Effects& effects, const std::string& place) {
  if (!fault.atAccept) return;
  const std::string own = memberPlace(place, effects.transfer);
  if (effects.names != effects.transfer)
    throw InputError(own + ": is the only effect of its fault");
  if (fault.path != kEveryPath) throw InputError(own + ": its path is \"*\"");
  if (fault.first == kUnlimited && fault.times == kUnlimited) {
    throw InputError(own +
                     ": needs \"first\" or \"times\", or the control path is closed for good");
  }
}

void checkReply(const Fault& fault, const Effects& effects, const std::string& place) {
  const std::string transfer = memberPlace(place, effects.transfer);
  const bool saysSomething = fault.status || !fault.headers.empty() || fault.body;
  if (fault.delivery.sendsNothing() && saysSomething) {
    throw InputError(transfer + ": nothing is sent that could have a status, headers or a body");
  }
  const bool isBodiless = fault.status && statusForbidsBody(*fault.status);
  if (isBodiless && fault.body) {
    throw InputError(memberPlace(place, effects.body) + ": replies of that status have no body");
  }
  if (fault.delivery.cutsBody() && (isBodiless || (fault.body && fault.body().empty()))) {
    throw InputError(transfer + ": there is no body to cut");
  }
}

Fault readFault(const Json& json, const Contract& contract, const std::string& place) {
  if (!json.is_object()) {
    throw InputError(place + ": expected an object, got " + quoteForMessage(json));
  }
  Fault fault;
  fault.given = json;
  const Effects effects = readKeys(fault, place);
  checkScope(fault, contract, place);
  if (effects.names.empty()) throw InputError(place + ": says nothing that goes wrong");
  checkAtAccept(fault, effects, place);
  checkReply(fault, effects, place);
  if (fault.name.empty()) fault.name = effects.names;
  return fault;
}

}  // namespace

std::vector<Fault> readFaults(const Json& json, const Contract& contract) {
  if (!json.is_array()) {
    throw InputError("expected an array of faults, got " + quoteForMessage(json));
  }
  if (json.size() > kMaxFaults) {
    throw InputError("more than " + std::to_string(kMaxFaults) + " faults");
  }
  std::vector<Fault> faults;
  for (std::size_t i = 0; i < json.size(); ++i) {
    faults.push_back(readFault(json[i], contract, "[" + std::to_string(i) + "]"));
  }
  return faults;
}

}  // namespace risk_server
