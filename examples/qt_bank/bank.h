// What the screens of the bank show and do.
#pragma once

#include <quorvance/check_point.h>
#include <quorvance/verdict.h>

#include <QObject>
#include <QTimer>
#include <QVariantMap>
#include <chrono>
#include <functional>
#include <optional>

#include "decision.h"
#include "ledger.h"

namespace qt_bank {

class RiskClient;

// One customer at one terminal. Begins with the question for consent, unless it was answered in an
// earlier run; then sign-in, accounts, and from there transfers and cards. Each of these asks for a
// verdict, is busy until it comes, and ends in the accounts, with a second factor, or in an outcome
// that denies. Lives and is used on the GUI thread; owned by main, which QML knows.
class Bank : public QObject {
  Q_OBJECT
  Q_PROPERTY(Page page READ page NOTIFY changed)
  Q_PROPERTY(bool isBusy READ isBusy NOTIFY changed)
  Q_PROPERTY(bool isSignedIn READ isSignedIn NOTIFY changed)
  Q_PROPERTY(QString notice READ notice NOTIFY changed)
  Q_PROPERTY(QString confirmationText READ confirmationText NOTIFY changed)
  Q_PROPERTY(QVariantMap outcome READ outcome NOTIFY changed)
  Q_PROPERTY(QString balance READ balance NOTIFY ledgerChanged)
  Q_PROPERTY(QVariantList accounts READ accounts NOTIFY ledgerChanged)
  Q_PROPERTY(QVariantList movements READ movements NOTIFY ledgerChanged)
  Q_PROPERTY(QVariantList payees READ payees CONSTANT)
  Q_PROPERTY(QString firstName READ firstName CONSTANT)
  Q_PROPERTY(QString fullName READ fullName CONSTANT)
  // The screens are watched from then on: one that begins before the server's configuration has
  // come would not be recorded.
  Q_PROPERTY(bool isConfigured READ isConfigured NOTIFY configured)
  Q_PROPERTY(bool mouseIsFinger MEMBER mouseIsFinger_ CONSTANT)

 public:
  // In the order of Main.qml's list.
  enum Page {
    ConsentPage,
    SignInPage,
    HomePage,
    TransferPage,
    SecondFactorPage,
    AddCardPage,
    OutcomePage
  };
  Q_ENUM(Page)

  // The consent of an earlier run, if it was asked for. The client must outlive the bank.
  Bank(RiskClient& risk, std::optional<bool> consent, bool mouseIsFinger);

  static QString userId() { return "user-17"; }

  Page page() const { return page_; }
  bool isBusy() const { return isBusy_; }
  bool isSignedIn() const { return isSignedIn_; }
  bool isConfigured() const { return isConfigured_; }
  QString notice() const { return notice_; }
  QString confirmationText() const { return confirmationText_; }
  // {isDone, title, text, reference}
  QVariantMap outcome() const { return outcome_; }
  QString balance() const { return moneyText(ledger_.balance()); }
  QVariantList accounts() const { return ledger_.accountRows(); }
  QVariantList movements() const { return ledger_.movementRows(); }
  QVariantList payees() const { return ledger_.payeeRows(); }
  QString firstName() const { return "Nora"; }
  QString fullName() const { return "Nora Lind"; }

  Q_INVOKABLE QString money(qint64 cents) const { return moneyText(cents); }
  // Leads on to the sign-in, whatever the answer is.
  Q_INVOKABLE void answerConsent(bool isGiven);
  // Given or taken back later.
  void setConsent(bool isGiven);
  Q_INVOKABLE void signIn(const QString& pin);
  Q_INVOKABLE void goTo(qt_bank::Bank::Page page);
  // Back to the accounts; what waits for a second factor is given up.
  Q_INVOKABLE void leave();
  Q_INVOKABLE void transfer(int payee, qint64 cents);
  Q_INVOKABLE void addCard(const QString& lastFourDigits, const QString& month,
                           const QString& year);
  // The code of the second factor.
  Q_INVOKABLE void confirm(const QString& code);
  Q_INVOKABLE void signOut();
  Q_INVOKABLE void openPrivacy() { emit privacyWanted(); }

 signals:
  void changed();
  void ledgerChanged();
  void configured();
  void consentChanged(bool hasConsent);
  void privacyWanted();
  void decided(const QString& checkPoint, const quorvance::Verdict& verdict,
               qt_bank::Decision decision);

 private:
  // What a verdict is asked for, and what follows.
  struct Operation {
    quorvance::CheckPointType type;
    QString name;
    std::chrono::milliseconds deadline;
    std::function<Decision(const quorvance::Verdict&)> decide;
    std::function<void()> complete;
    QString transactionId;
  };
  struct Waiting {
    Operation operation;
    quorvance::Verdict verdict;
    int wrongCodes = 0;
  };

  void begin(const quorvance::CheckPoint& checkPoint, Operation operation);
  void onVerdict(const Operation& operation, const quorvance::Verdict& verdict);
  void settle(const Operation& operation, const quorvance::Verdict& verdict,
              quorvance::CheckPointStatus status);
  void refuse(const Operation& operation, const quorvance::Verdict& verdict, Decision decision);
  void startChecks(bool hasConsent);
  void show(Page page);
  void warn(const QString& notice);
  void showOutcome(bool isDone, const QString& title, const QString& text,
                   const QString& reference);

  RiskClient& risk_;
  const bool mouseIsFinger_;
  Ledger ledger_;
  Page page_ = ConsentPage;
  bool isBusy_ = false;
  bool isSignedIn_ = false;
  bool isConfigured_ = false;
  QTimer configuring_;
  QString notice_;
  QString confirmationText_;
  QVariantMap outcome_;
  std::optional<Waiting> waiting_;
  int transactions_ = 0;
};

}  // namespace qt_bank
