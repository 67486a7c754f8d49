// What the bank does about a verdict, and without one. Pure functions: the whole policy is here.
#pragma once

#include <quorvance/verdict.h>

#include <QString>

namespace qt_bank {

enum class Decision {
  allow,
  // A second factor first.
  confirm,
  deny,
  // Not now: nobody could tell whether it is safe.
  hold,
};

// Up to this amount a transfer needs no verdict: what may be lost is less than what a customer is
// worth who cannot pay for a meal.
inline constexpr qint64 kUncheckedCents = 10'000;

Decision decideSignIn(const quorvance::Verdict& verdict);
Decision decideTransfer(const quorvance::Verdict& verdict, qint64 cents);
Decision decideCard(const quorvance::Verdict& verdict);

// Its name as it stands above.
QString decisionText(Decision decision);
// Why there is no verdict, in words for a customer.
QString reasonText(quorvance::VerdictReason reason);

}  // namespace qt_bank
