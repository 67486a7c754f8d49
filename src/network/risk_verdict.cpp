#include "network/risk_verdict.h"

#include <utility>

namespace quorvance {

RiskVerdict answerlessVerdict(std::string requestId) {
  return {Risk{}, "-1", std::move(requestId)};
}

// A reply's own "requestID" has already replaced the call's in the response.
RiskVerdict readVerdict(const ResponceObject& response) {
  RiskVerdict verdict = answerlessVerdict(response.requestId);
  if (!response.output) return verdict;
  if (const auto raw = findInteger(*response.output, "risk")) {
    verdict.risk.riskLevel = RiskLevelEnumerator::fromRawValue(*raw).value_or(RiskLevel::undefined);
  }
  if (const std::string* text = findText(*response.output, "signedRisk")) {
    verdict.signedRisk = *text;
  }
  return verdict;
}

}  // namespace quorvance
