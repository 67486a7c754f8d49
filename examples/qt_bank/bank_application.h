// The parts of the program, and their lives.
#pragma once

#include <QQmlApplicationEngine>
#include <QSettings>
#include <memory>
#include <optional>

#include "bank.h"
#include "bank_options.h"
#include "privacy_window.h"
#include "risk_client.h"
#include "toasts.h"

class QQuickWindow;

namespace qt_bank {

// Made after the application object, with its names set, and used on its thread. Runs once: shows
// the windows, runs the event loop, and at its end sends what is under way.
class BankApplication {
 public:
  explicit BankApplication(const BankOptions& options);

  // The exit status of the process.
  int run();

 private:
  std::optional<bool> storedConsent() const;
  // Null when the screens cannot be loaded; the engine has then said why.
  QQuickWindow* showWindow();
  // Plays the script in the event loop, and ends that with the exit status.
  void playScript(QQuickWindow& window);
  int finish(int status);

  const BankOptions options_;
  const std::unique_ptr<QSettings> settings_;
  RiskClient risk_;
  Toasts toasts_;
  Bank bank_;
  PrivacyWindow privacy_;
  std::optional<QQmlApplicationEngine> engine_;
  bool hasWarned_ = false;
};

}  // namespace qt_bank
