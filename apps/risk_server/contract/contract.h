// What the risk server accepts: its service calls, and what each must carry.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "apps/risk_server/contract/contract_rule.h"

namespace risk_server {

enum class ReplyKind { kAccepted, kConfiguration, kDeviceIdentifier, kVerdict };

struct ServiceCall {
  ReplyKind reply = ReplyKind::kAccepted;
  RulePointer body;
};

// Immutable once read: any thread.
class Contract {
 public:
  // {"contentType": TEXT, "definitions": {NAME: RULE}, "calls": {PATH: {"reply": KIND, "body":
  // RULE}}} with the rules of contract_reader.h. Throws InputError naming the place.
  static Contract fromJson(const Json& json);

  // The call of exactly this request target, byte for byte, or null.
  const ServiceCall* find(const std::string& target) const;

  // Why no call has this target; names the call that differs in its slashes only.
  std::string reasonForUnknown(const std::string& target) const;

  // Why the content type is wrong; `values` are those of all Content-Type headers.
  std::optional<std::string> contentTypeFault(const std::vector<std::string>& values) const;

  const std::map<std::string, ServiceCall>& calls() const { return calls_; }
  const std::string& contentType() const { return contentType_; }

  // As it was written.
  const Json& asJson() const { return given_; }

 private:
  Json given_;
  std::string contentType_;
  std::map<std::string, ServiceCall> calls_;
};

}  // namespace risk_server
