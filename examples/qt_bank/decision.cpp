#include "decision.h"

namespace qt_bank {

using quorvance::RiskLevel;
using quorvance::Verdict;
using quorvance::VerdictReason;

// Fail open: without a verdict the customer gets in. To be locked out of one's own bank costs more
// than the risk, since whatever moves money is checked again.
Decision decideSignIn(const Verdict& verdict) {
  switch (verdict.risk.riskLevel) {
    case RiskLevel::veryHigh:
      return Decision::deny;
    case RiskLevel::high:
      return Decision::confirm;
    case RiskLevel::low:
    case RiskLevel::medium:
    case RiskLevel::undefined:
    case RiskLevel::expire:
      break;
  }
  return Decision::allow;
}

// Fail closed: without a verdict the money stays where it is, small sums apart. Whatever this
// program decides, the bank's server checks the signed verdict before it books anything.
Decision decideTransfer(const Verdict& verdict, qint64 cents) {
  switch (verdict.risk.riskLevel) {
    case RiskLevel::low:
      return Decision::allow;
    case RiskLevel::medium:
    case RiskLevel::high:
      return Decision::confirm;
    case RiskLevel::veryHigh:
      return Decision::deny;
    case RiskLevel::undefined:
    case RiskLevel::expire:
      break;
  }
  return cents <= kUncheckedCents ? Decision::allow : Decision::hold;
}

// Between the two: without a verdict the customer's phone stands in for it.
Decision decideCard(const Verdict& verdict) {
  switch (verdict.risk.riskLevel) {
    case RiskLevel::low:
    case RiskLevel::medium:
      return Decision::allow;
    case RiskLevel::veryHigh:
      return Decision::deny;
    case RiskLevel::high:
    case RiskLevel::undefined:
    case RiskLevel::expire:
      break;
  }
  return Decision::confirm;
}

QString decisionText(Decision decision) {
  switch (decision) {
    case Decision::allow:
      return "allow";
    case Decision::confirm:
      return "confirm";
    case Decision::deny:
      return "deny";
    case Decision::hold:
      break;
  }
  return "hold";
}

QString reasonText(VerdictReason reason) {
  switch (reason) {
    case VerdictReason::collectionOff:
      return "You have not agreed to our security checks. You can do so under Privacy.";
    case VerdictReason::timedOut:
      return "Our security check takes longer than usual. Please try again in a minute.";
    case VerdictReason::certificate:
      return "This device could not be sure that it talks to us. Please tell a member of our "
             "staff.";
    default:
      return "Our security check cannot be reached. Please try again in a few minutes.";
  }
}

}  // namespace qt_bank
