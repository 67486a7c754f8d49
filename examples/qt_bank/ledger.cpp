#include "ledger.h"

#include <QLocale>
#include <QVariantMap>

namespace qt_bank {
namespace {

QVariantMap row(const QString& name, const QString& number, const QString& amount,
                bool isIncome = false) {
  return {{"name", name}, {"number", number}, {"amount", amount}, {"isIncome", isIncome}};
}

QString today(const QString& detail) { return QStringLiteral("Today · ") + detail; }

}  // namespace

QString moneyText(qint64 cents) {
  const QLocale english(QLocale::English, QLocale::Ireland);
  const qint64 amount = cents < 0 ? -cents : cents;
  const QString sign = cents < 0 ? QStringLiteral("\u2212") : QString();
  return sign + QStringLiteral("€ ") + english.toString(amount / kCentsInOne) + u'.' +
         QString::number(amount % kCentsInOne).rightJustified(2, u'0');
}

Ledger::Ledger()
    : accounts_{{"Current account", "DE02 5001 0517 0137 0750 30", 1'248'050},
                {"Savings account", "DE02 1005 0000 0054 5404 02", 860'000}},
      cards_{{"Debit card", "•••• 2231"}},
      payees_{{"Jonas Berg", "DE02 1203 0000 0000 2020 51"},
              {"Riverside Power", "DE02 3002 0900 0106 5310 65"}},
      movements_{{"Green Basket", "Today · Debit card", -6'420},
                 {"Riverside Power", "Yesterday · Direct debit", -8'900},
                 {"Hollis & Daughters Ltd", "Friday · Salary", 342'000},
                 {"Northline Railways", "Thursday · Debit card", -2'780},
                 {"Café Ansel", "Wednesday · Debit card", -940},
                 {"Jonas Berg", "Tuesday · Transfer", 4'500}} {}

qint64 Ledger::balance() const {
  qint64 cents = 0;
  for (const Account& account : accounts_) cents += account.cents;
  return cents;
}

void Ledger::transfer(const Payee& payee, qint64 cents) {
  accounts_.front().cents -= cents;
  movements_.insert(movements_.begin(), {payee.name, today("Transfer"), -cents});
}

void Ledger::addCard(const QString& lastFourDigits, const QString& month, const QString& year) {
  cards_.push_back({"Credit card", "•••• " + lastFourDigits + " · until " + month + "/" + year});
}

QVariantList Ledger::accountRows() const {
  QVariantList rows;
  for (const Account& account : accounts_) {
    rows << row(account.name, account.number, moneyText(account.cents));
  }
  for (const Payee& card : cards_) rows << row(card.name, card.number, "Active");
  return rows;
}

QVariantList Ledger::payeeRows() const {
  QVariantList rows;
  for (const Payee& payee : payees_) rows << row(payee.name, payee.number, {});
  return rows;
}

QVariantList Ledger::movementRows() const {
  QVariantList rows;
  for (const Movement& movement : movements_) {
    const bool isIncome = movement.cents > 0;
    const QString amount = (isIncome ? "+" : "") + moneyText(movement.cents);
    rows << row(movement.name, movement.when, amount, isIncome);
  }
  return rows;
}

}  // namespace qt_bank
