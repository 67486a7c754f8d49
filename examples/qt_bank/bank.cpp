#include "bank.h"

#include <quorvance/quorvance.h>

#include <memory>
#include <utility>

#include "risk_client.h"
#include "toasts.h"

namespace qt_bank {
namespace {

using quorvance::CheckPointStatus;
using quorvance::CheckPointType;
using quorvance::Verdict;

// Of the demonstration; the screens tell them.
constexpr char kPin[] = "2468";
constexpr char kCode[] = "424242";
constexpr std::chrono::milliseconds kConfigurationLook{50};
constexpr int kMostWrongCodes = 3;

quorvance::Transaction transferOf(const QString& destination, qint64 cents) {
  return quorvance::Transaction({.actType = quorvance::TransactionType::MONEY_TRANSFER,
                                 .curType = quorvance::CurrencyCode::EUR,
                                 .destinationId = QString(destination).remove(u' ').toStdString(),
                                 .amount = static_cast<double>(cents) / kCentsInOne,
                                 .user = std::make_shared<quorvance::User>(
                                     quorvance::User{.userId = Bank::userId().toStdString()})});
}

// What is told of a card: never its number.
quorvance::AddPaymentMethod cardOf(const QString& name, const QString& lastFourDigits,
                                   const QString& month, const QString& year) {
  const auto user =
      std::make_shared<quorvance::User>(quorvance::User{.userId = Bank::userId().toStdString()});
  const auto card = std::make_shared<quorvance::CreditCardDetail>(
      quorvance::CreditCardDetail{.cardToken = "token-" + lastFourDigits.toStdString(),
                                  .lastFourDigit = lastFourDigits.toStdString(),
                                  .yearExpiryDate = 2000 + year.toInt(),
                                  .monthExpiryDate = month.toInt()});
  const auto payment = std::make_shared<quorvance::Payment>(
      quorvance::Payment{.paymentMethod = quorvance::PaymentMethodType::CREDIT_CARD,
                         .fullNameOnCard = name.toStdString(),
                         .creditCardDetail = card});
  return quorvance::AddPaymentMethod(user, payment, nullptr);
}

}  // namespace

Bank::Bank(RiskClient& risk, std::optional<bool> consent, bool mouseIsFinger)
    : risk_(risk), mouseIsFinger_(mouseIsFinger) {
  configuring_.setInterval(kConfigurationLook);
  connect(&configuring_, &QTimer::timeout, this, [this] {
    if (!risk_.status().isConfigured) return;
    configuring_.stop();
    isConfigured_ = true;
    emit configured();
  });
  if (!consent) return;
  startChecks(*consent);
  page_ = SignInPage;
}

void Bank::startChecks(bool hasConsent) {
  risk_.setConsent(hasConsent);
  if (hasConsent && !isConfigured_) configuring_.start();
}

void Bank::answerConsent(bool isGiven) {
  setConsent(isGiven);
  show(SignInPage);
}

void Bank::setConsent(bool isGiven) {
  startChecks(isGiven);
  emit consentChanged(isGiven);
  debugLine(isGiven ? "the checks begin" : "nothing is collected");
}

void Bank::signIn(const QString& pin) {
  if (isBusy_) return;
  if (pin != kPin) return warn("This is not your PIN. Please try again.");
  begin(quorvance::Login({.userId = userId().toStdString()}), {.type = CheckPointType::LOGIN,
                                                               .name = "Sign-in",
                                                               .deadline = kSignInDeadline,
                                                               .decide = decideSignIn,
                                                               .complete =
                                                                   [this] {
                                                                     isSignedIn_ = true;
                                                                     show(HomePage);
                                                                   },
                                                               .transactionId = {}});
}

void Bank::goTo(Page page) {
  if (isSignedIn_ && !isBusy_ && !waiting_) show(page);
}

void Bank::leave() {
  if (isBusy_) return;
  if (waiting_) settle(waiting_->operation, waiting_->verdict, CheckPointStatus::CANCELLED);
  waiting_.reset();
  show(isSignedIn_ ? HomePage : SignInPage);
}

void Bank::transfer(int payee, qint64 cents) {
  const auto& payees = ledger_.payees();
  if (!isSignedIn_ || isBusy_ || cents <= 0 || payee < 0 || payee >= qsizetype(payees.size())) {
    return;
  }
  if (cents > ledger_.accounts().front().cents) {
    return warn("Your account does not cover this amount.");
  }
  const Ledger::Payee& to = payees[static_cast<std::size_t>(payee)];
  const QString id = QString("transfer-%1").arg(++transactions_);
  const QString text = moneyText(cents) + " to " + to.name;
  begin(transferOf(to.number, cents),
        {.type = CheckPointType::TRANSACTION,
         .name = "Transfer of " + text,
         .deadline = kPaymentDeadline,
         .decide = [cents](const Verdict& verdict) { return decideTransfer(verdict, cents); },
         .complete =
             [this, to, cents, id, text] {
               ledger_.transfer(to, cents);
               emit ledgerChanged();
               showOutcome(true, "The money is on its way", text + ".", "Reference " + id);
             },
         .transactionId = id});
}

void Bank::addCard(const QString& lastFourDigits, const QString& month, const QString& year) {
  if (!isSignedIn_ || isBusy_) return;
  if (month.toInt() < 1 || month.toInt() > 12) return warn("There is no month " + month + ".");
  begin(cardOf(fullName(), lastFourDigits, month, year),
        {.type = CheckPointType::ADD_PAYMENT_METHOD,
         .name = "Card that ends in " + lastFourDigits,
         .deadline = kPaymentDeadline,
         .decide = decideCard,
         .complete =
             [=, this] {
               ledger_.addCard(lastFourDigits, month, year);
               emit ledgerChanged();
               showOutcome(true, "Your card is added",
                           "The card that ends in " + lastFourDigits + " can be used now.", {});
             },
         .transactionId = {}});
}

void Bank::begin(const quorvance::CheckPoint& checkPoint, Operation operation) {
  isBusy_ = true;
  notice_.clear();
  emit changed();
  const auto deadline = operation.deadline;
  risk_.ask(checkPoint, deadline, this,
            [this, operation = std::move(operation)](const Verdict& verdict) {
              isBusy_ = false;
              onVerdict(operation, verdict);
            });
}

void Bank::onVerdict(const Operation& operation, const Verdict& verdict) {
  const Decision decision = operation.decide(verdict);
  debugLine(operation.name + ": " + decisionText(decision));
  emit decided(operation.name, verdict, decision);
  switch (decision) {
    case Decision::allow:
      settle(operation, verdict, CheckPointStatus::APPROVED);
      return operation.complete();
    case Decision::confirm:
      waiting_ = Waiting{operation, verdict};
      confirmationText_ =
          operation.name + ". Enter the six digits that we have sent to your phone.";
      return show(SecondFactorPage);
    case Decision::deny:
    case Decision::hold:
      return refuse(operation, verdict, decision);
  }
}

void Bank::confirm(const QString& code) {
  if (!waiting_ || isBusy_) return;
  if (code == kCode) {
    const Waiting waiting = *std::exchange(waiting_, std::nullopt);
    settle(waiting.operation, waiting.verdict, CheckPointStatus::APPROVED);
    return waiting.operation.complete();
  }
  if (++waiting_->wrongCodes < kMostWrongCodes) {
    return warn("This is not the code. Please try again.");
  }
  const Waiting waiting = *std::exchange(waiting_, std::nullopt);
  refuse(waiting.operation, waiting.verdict, Decision::deny);
}

void Bank::signOut() {
  if (isBusy_) return;
  risk_.signOut();
  isSignedIn_ = false;
  show(SignInPage);
}

void Bank::settle(const Operation& operation, const Verdict& verdict, CheckPointStatus status) {
  risk_.reportOutcome(operation.type, verdict, status, operation.transactionId);
}

void Bank::refuse(const Operation& operation, const Verdict& verdict, Decision decision) {
  settle(operation, verdict, CheckPointStatus::DENIED);
  const QString reference = verdict.requestID.empty()
                                ? QString()
                                : "Reference " + QString::fromStdString(verdict.requestID).left(8);
  if (decision == Decision::hold) {
    return showOutcome(false, "Not possible right now",
                       operation.name + " was not made. " + reasonText(verdict.reason), reference);
  }
  showOutcome(false, "We have stopped this",
              operation.name +
                  " was not made, to protect you. If it was you, please call us or "
                  "come to a branch.",
              reference);
}

void Bank::show(Page page) {
  page_ = page;
  notice_.clear();
  emit changed();
}

void Bank::warn(const QString& notice) {
  notice_ = notice;
  emit changed();
}

void Bank::showOutcome(bool isDone, const QString& title, const QString& text,
                       const QString& reference) {
  outcome_ = {{"isDone", isDone}, {"title", title}, {"text", text}, {"reference", reference}};
  show(OutcomePage);
}

}  // namespace qt_bank
