// The screen about consent and what is stored, made of widgets.
#pragma once

#include <quorvance/qt/qt_screen.h>

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QWidget>
#include <QWindow>

namespace qt_bank {

class RiskClient;
class Toasts;

// Over the bank's own window and of its size. Refreshes what it shows while it is open. GUI thread;
// the client and the toasts must outlive it.
class PrivacyWindow : public QWidget {
  Q_OBJECT

 public:
  PrivacyWindow(RiskClient& risk, const Toasts& toasts, bool mouseIsFinger);

  void open(const QWindow& bank);

 signals:
  void consentWanted(bool isGiven);

 protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  QWidget* makeHeader();
  QWidget* makeContent();
  QWidget* makeConsent();
  QWidget* makeStored();
  QWidget* makeStatus();
  void erase();
  void refresh();
  void placeToast();

  RiskClient& risk_;
  const Toasts& toasts_;
  const bool mouseIsFinger_;
  QCheckBox* consent_ = nullptr;
  QPushButton* erase_ = nullptr;
  QLabel* erased_ = nullptr;
  QLabel* status_ = nullptr;
  QLabel* toast_ = nullptr;
  QTimer refreshing_;
  // Watches the window while it is shown.
  quorvance::qt::Screen screen_;
};

}  // namespace qt_bank
