#include "apps/risk_server/contract/call_check.h"

#include <utility>

namespace risk_server {
namespace {

void refuse(CheckedCall& checked, int status, std::string fault) {
  checked.status = status;
  checked.fault = std::move(fault);
}

void checkBody(CheckedCall& checked, const std::string& bytes) {
  ParsedJson body = parseServerJson(bytes);
  if (!body.value) return refuse(checked, 400, "the body is no JSON: " + body.fault);
  if (!body.value->is_object()) {
    return refuse(checked, 400,
                  "the body: expected an object, got " + quoteForMessage(*body.value));
  }
  checked.body = std::move(body.value);
  checked.violations = checked.call->body->mismatchesOf(*checked.body);
  if (!checked.violations.empty()) refuse(checked, 400, checked.violations.front().text());
}

}  // namespace

CheckedCall checkCall(const Contract& contract, const std::string& method,
                      const std::string& target, const std::vector<std::string>& contentTypes,
                      const std::string& body) {
  CheckedCall checked;
  checked.call = contract.find(target);
  if (checked.call == nullptr) {
    refuse(checked, 404, contract.reasonForUnknown(target));
  } else if (method != "POST") {
    refuse(checked, 405, "method " + method + ": only POST is expected");
    checked.allow = "POST";
  } else if (auto fault = contract.contentTypeFault(contentTypes)) {
    refuse(checked, 400, std::move(*fault));
  } else {
    checkBody(checked, body);
  }
  return checked;
}

}  // namespace risk_server
