#include "journeys.h"

#include <quorvance/verdict.h>

#include <QQuickItem>
#include <map>

#include "journey_stage.h"
#include "privacy_window.h"

namespace qt_bank {
namespace {

using quorvance::VerdictReason;

constexpr QSize kTerminal(480, 800);
constexpr QSize kDesk(1024, 768);

void signIn(JourneyStage& stage, VerdictReason reason) {
  stage.step("signs in: a wrong PIN, then the right one");
  stage.expectPage(Bank::SignInPage);
  if (reason == VerdictReason::answered) {
    stage.waitFor("the configuration", [&] { return stage.bank().isConfigured(); });
  }
  stage.type("2469");
  stage.expectText("notice", "This is not your PIN. Please try again.");
  stage.type("2468");
  // Fail open: with or without a verdict the customer gets in.
  stage.expectDecision(Decision::allow, reason);
  stage.expectPage(Bank::HomePage);
}

void transfer(JourneyStage& stage, const QString& digits) {
  stage.tap("transfer");
  stage.expectPage(Bank::TransferPage);
  stage.type(digits);
}

void leave(JourneyStage& stage, const QString& title) {
  stage.expectPage(Bank::OutcomePage);
  stage.expectText("outcomeTitle", title);
  stage.tap("toAccounts");
  stage.expectPage(Bank::HomePage);
}

void answerConsent(JourneyStage& stage, const QString& answer) {
  stage.expectPage(Bank::ConsentPage);
  stage.picture("consent");
  stage.tap(answer);
}

void playDenied(JourneyStage& stage) {
  stage.step("sends € 9,000.00: denied");
  transfer(stage, "900000");
  stage.tap("send");
  stage.expectDecision(Decision::deny, VerdictReason::answered);
  stage.expectPage(Bank::OutcomePage);
  stage.picture("denied");
  leave(stage, "We have stopped this");
  stage.expectText("balance", "€ 20,130.50");
}

void playTransfers(JourneyStage& stage) {
  stage.step("sends € 50.00: allowed");
  transfer(stage, "5000");
  stage.tap("send");
  stage.expectDecision(Decision::allow, VerdictReason::answered);
  leave(stage, "The money is on its way");
  stage.expectText("balance", "€ 21,030.50");

  stage.step("sends € 900.00 to the other payee: asked for a second factor");
  transfer(stage, "90000");
  stage.tap("option1");
  stage.picture("transfer");
  stage.tap("send");
  stage.expectDecision(Decision::confirm, VerdictReason::answered);
  stage.expectPage(Bank::SecondFactorPage);
  stage.type("111111");
  stage.expectText("notice", "This is not the code. Please try again.");
  stage.picture("second_factor");
  stage.type("424242");
  leave(stage, "The money is on its way");
  stage.expectText("balance", "€ 20,130.50");
}

void takeEverythingBack(JourneyStage& stage) {
  stage.step("looks at the privacy screen, takes the consent back and erases what is stored");
  stage.tap("privacy");
  stage.expectPrivacyText("status", "Session accepted: yes");
  stage.expectPrivacyText("status", "Waiting to be sent: 0");
  stage.picture("privacy");
  stage.tapPrivacy("consent");
  stage.tapPrivacy("erase");
  stage.expectPrivacyText("erased", "Nothing is left.");
  stage.tapPrivacy("close");
  stage.waitFor("its end", [&] { return !stage.privacy().isVisible(); });
}

// Everything that a customer does, with a server that answers.
void playDay(JourneyStage& stage) {
  stage.step("agrees to the checks");
  answerConsent(stage, "agree");
  signIn(stage, VerdictReason::answered);

  stage.step("looks at the accounts, on a wide screen too");
  stage.drag({240, 700}, {240, 400});
  stage.resize(kDesk);
  stage.picture("accounts");
  stage.resize(kTerminal);

  playTransfers(stage);
  playDenied(stage);

  stage.step("adds a card");
  stage.tap("addCard");
  stage.expectPage(Bank::AddCardPage);
  stage.type("77010929");
  stage.tap("add");
  stage.expectDecision(Decision::allow, VerdictReason::answered);
  leave(stage, "Your card is added");

  stage.step("signs out");
  stage.tap("signOut");
  stage.expectPage(Bank::SignInPage);

  takeEverythingBack(stage);
}

// Without a verdict: what is small goes through, what is large is held, a card takes a code.
void playWithoutVerdicts(JourneyStage& stage, VerdictReason reason) {
  signIn(stage, reason);
  stage.step("sends € 50.00: allowed without a verdict");
  transfer(stage, "5000");
  stage.tap("send");
  stage.expectDecision(Decision::allow, reason);
  leave(stage, "The money is on its way");

  stage.step("sends € 900.00: held, fail closed");
  transfer(stage, "90000");
  stage.tap("send");
  stage.expectDecision(Decision::hold, reason);
  leave(stage, "Not possible right now");
  stage.expectText("balance", "€ 21,030.50");

  stage.step("adds a card: takes a second factor");
  stage.tap("addCard");
  stage.expectPage(Bank::AddCardPage);
  stage.type("77010929");
  stage.tap("add");
  stage.expectDecision(Decision::confirm, reason);
  stage.expectPage(Bank::SecondFactorPage);
  stage.type("424242");
  leave(stage, "Your card is added");
}

void playWithoutServer(JourneyStage& stage) {
  stage.step("agrees to the checks, and no server is there");
  answerConsent(stage, "agree");
  playWithoutVerdicts(stage, VerdictReason::unreachable);
}

void playWithoutConsent(JourneyStage& stage) {
  stage.step("does not agree to the checks");
  answerConsent(stage, "decline");
  playWithoutVerdicts(stage, VerdictReason::collectionOff);

  stage.step("signs out and in again, and sends € 50.00, by the keyboard");
  stage.tap("signOut");
  stage.expectPage(Bank::SignInPage);
  stage.typeKeys("2468");
  stage.expectDecision(Decision::allow, VerdictReason::collectionOff);
  stage.expectPage(Bank::HomePage);
  stage.typeKeys("\n");
  stage.expectPage(Bank::TransferPage);
  stage.typeKeys("5000\n");
  stage.expectDecision(Decision::allow, VerdictReason::collectionOff);
  stage.expectPage(Bank::OutcomePage);
  stage.typeKeys("\n");
  stage.expectPage(Bank::HomePage);
  stage.expectText("balance", "€ 20,980.50");
}

// What the bank logs is shown for a moment, and what the library logs is not.
void playDebug(JourneyStage& stage) {
  stage.step("agrees to the checks and signs in, in debug mode");
  answerConsent(stage, "agree");
  signIn(stage, VerdictReason::answered);
  const auto isShown = [&] { return stage.toasts().contains("Sign-in: allow"); };
  stage.waitFor("the toast", isShown);
  stage.expectText("toastText", "Sign-in: allow");

  stage.step("swipes across the toast, which takes no touch");
  const QQuickItem& toast = stage.item("toastText");
  const QPoint middle = toast.mapToScene(toast.boundingRect().center()).toPoint();
  stage.drag(middle, middle - QPoint(0, 60));
  stage.waitFor("a scrolled list",
                [&] { return stage.item("accountsView").property("contentY").toDouble() > 0; });

  stage.step("waits until the toast is gone");
  stage.waitFor("its end", [&] { return !toast.isVisible(); });
  if (stage.toasts() != QStringList{"the checks begin", "Sign-in: allow"}) {
    throw JourneyFault("other toasts: " + stage.toasts().join(" | ").toStdString());
  }
}

const std::map<QString, void (*)(JourneyStage&)>& journeys() {
  static const std::map<QString, void (*)(JourneyStage&)> kJourneys = {
      {"day", playDay},
      {"debug", playDebug},
      {"no-server", playWithoutServer},
      {"no-consent", playWithoutConsent}};
  return kJourneys;
}

}  // namespace

QStringList journeyNames() {
  QStringList names;
  for (const auto& [name, play] : journeys()) names << name;
  return names;
}

void playJourney(const QString& name, JourneyStage& stage) { journeys().at(name)(stage); }

}  // namespace qt_bank
