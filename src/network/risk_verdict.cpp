#include "network/risk_verdict.h"

#include <utility>

namespace quorvance {

RiskVerdict answerlessVerdict(std::string requestId) {
  return {Risk{}, "-1", std::move(requestId), false};
}

VerdictReason reasonOf(const ResponceObject& response) {
  if (response.succeeded()) return VerdictReason::answered;
  if (!response.transportFault) {
    constexpr int kStatusOk = 200;
    return response.statusCode == kStatusOk ? VerdictReason::unreadable : VerdictReason::refused;
  }
  switch (*response.transportFault) {
    case TransportFault::timedOut:
      return VerdictReason::timedOut;
    case TransportFault::certificate:
      return VerdictReason::certificate;
    case TransportFault::notSent:
      return VerdictReason::cannotBeSent;
    case TransportFault::unreachable:
      break;
  }
  return VerdictReason::unreachable;
}

// A reply's own "requestID" has already replaced the call's in the response.
RiskVerdict readVerdict(const ResponceObject& response) {
  RiskVerdict verdict = answerlessVerdict(response.requestId);
  if (!response.output) return verdict;
  if (const auto raw = findInteger(*response.output, "risk")) {
    const auto level = RiskLevelEnumerator::fromRawValue(*raw);
    verdict.hasLevel = level.has_value();
    verdict.risk.riskLevel = level.value_or(RiskLevel::undefined);
  }
  if (const std::string* text = findText(*response.output, "signedRisk")) {
    verdict.signedRisk = *text;
  }
  return verdict;
}

}  // namespace quorvance
