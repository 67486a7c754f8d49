// Whether one call keeps to the contract: its method, target, content type and body.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/risk_server/contract/contract.h"

namespace risk_server {

struct CheckedCall {
  const ServiceCall* call = nullptr;  // null when no service has the target
  std::optional<Json> body;           // when it is a JSON object
  int status = 200;                   // of the refusal
  std::string fault;                  // why the call is refused; empty when it is accepted
  std::string allow;                  // the Allow header of the refusal
  std::vector<Mismatch> violations;   // everything that is wrong in the body
};

CheckedCall checkCall(const Contract& contract, const std::string& method,
                      const std::string& target, const std::vector<std::string>& contentTypes,
                      const std::string& body);

}  // namespace risk_server
