// Everything that the bank asks of the library, in one place.
#pragma once

#include <quorvance/quorvance_manager.h>

#include <QObject>
#include <QString>
#include <chrono>
#include <functional>
#include <memory>

#include "bank_options.h"

namespace qt_bank {

// How long a customer is kept waiting for a verdict.
inline constexpr std::chrono::milliseconds kSignInDeadline{2000};
inline constexpr std::chrono::milliseconds kPaymentDeadline{4000};

// The library as this application uses it: nothing is collected before the customer's consent.
// Made once, on the GUI thread, after the application object and before anything else of the
// library; used there.
class RiskClient {
 public:
  RiskClient(const BankOptions& options, const QString& userId);

  // Switches collection, and with it on, makes the device and this start known to the server.
  void setConsent(bool isGiven);
  bool hasConsent() const;

  // The completion comes on the receiver's thread, once, and not after the receiver's end.
  void ask(const quorvance::CheckPoint& checkPoint, std::chrono::milliseconds deadline,
           QObject* receiver, quorvance::VerdictCompletion completion);
  // Tells the server how it ended. Without a request identifier nobody has asked.
  void reportOutcome(quorvance::CheckPointType type, const quorvance::Verdict& verdict,
                     quorvance::CheckPointStatus status, const QString& transactionId = {});
  void signOut();

  // Erases what the library has stored; the completion comes on the receiver's thread.
  void erase(QObject* receiver, std::function<void(bool isAllGone)> completion);
  quorvance::DeliveryStatus status() const;

  // Waits for what is under way, at the end of the application; false when the time is over.
  bool flush(std::chrono::milliseconds timeout);

 private:
  std::shared_ptr<quorvance::QuorvanceManager> manager_;
  const std::string serverUrl_;
  const std::string userId_;
};

}  // namespace qt_bank
