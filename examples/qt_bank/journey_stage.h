// What a played journey has to do with: the windows, a finger, and what it expects.
#pragma once

#include <QString>
#include <QStringList>
#include <functional>
#include <stdexcept>

#include "bank.h"
#include "touch_driver.h"

class QQuickItem;
class QQuickWindow;

namespace qt_bank {

class PrivacyWindow;
class Toasts;

// A journey did not go as it should.
class JourneyFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Every wait runs the event loop and is bounded. What cannot be done, or does not come in time,
// throws JourneyFault. GUI thread; everything given must outlive it.
class JourneyStage {
 public:
  // An empty folder means no pictures.
  JourneyStage(Bank& bank, QQuickWindow& window, PrivacyWindow& privacy, Toasts& toasts,
               const QString& pictures);

  // Prints what comes next.
  void step(const QString& text);
  void tap(const QString& name);
  // Taps the digits of the pad that is shown.
  void type(const QString& digits);
  void drag(QPoint from, QPoint to);
  // On the keyboard; a line end is the Return key.
  void typeKeys(const QString& keys);
  void tapPrivacy(const QString& name);

  void waitFor(const QString& what, const std::function<bool()>& isSo);
  // The page is shown and the bank is not busy.
  void expectPage(Bank::Page page);
  // The next verdict since the last call led to this.
  void expectDecision(Decision decision, quorvance::VerdictReason reason);
  void expectText(const QString& name, const QString& text);
  void expectPrivacyText(const QString& name, const QString& part);

  void resize(QSize size);
  // Of the bank's window, or of the privacy window while that is shown.
  void picture(const QString& name);

  Bank& bank() { return bank_; }
  PrivacyWindow& privacy() { return privacy_; }
  // All toasts that were shown, the newest last.
  const QStringList& toasts() const { return shownToasts_; }
  QQuickItem& item(const QString& name);

 private:
  struct Decided {
    QString checkPoint;
    quorvance::Verdict verdict;
    Decision decision;
  };

  void print(const Decided& decided) const;

  Bank& bank_;
  QQuickWindow& window_;
  PrivacyWindow& privacy_;
  const QString pictures_;
  TouchDriver finger_;
  QList<Decided> decided_;
  QStringList shownToasts_;
};

}  // namespace qt_bank
