// What the bank knows of its customer: made up, and kept in memory alone.
#pragma once

#include <QString>
#include <QVariantList>
#include <vector>

namespace qt_bank {

inline constexpr int kCentsInOne = 100;

// "€ 1,234.50"; a true minus in front of what is negative.
QString moneyText(qint64 cents);

// Accounts, cards, payees and movements. GUI thread only.
class Ledger {
 public:
  struct Account {
    QString name;
    QString number;
    qint64 cents = 0;
  };
  struct Payee {
    QString name;
    QString number;
  };
  struct Movement {
    QString name;
    QString when;
    qint64 cents = 0;
  };

  Ledger();

  qint64 balance() const;
  const std::vector<Account>& accounts() const { return accounts_; }
  const std::vector<Payee>& payees() const { return payees_; }

  // Takes the amount from the first account; it must be covered.
  void transfer(const Payee& payee, qint64 cents);
  void addCard(const QString& lastFourDigits, const QString& month, const QString& year);

  // Rows of {name, number, amount, isIncome}, as the screens show them.
  QVariantList accountRows() const;
  QVariantList payeeRows() const;
  QVariantList movementRows() const;

 private:
  std::vector<Account> accounts_;
  std::vector<Payee> cards_;
  std::vector<Payee> payees_;
  std::vector<Movement> movements_;
};

}  // namespace qt_bank
