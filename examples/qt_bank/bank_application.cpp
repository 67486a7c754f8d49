#include "bank_application.h"

#include <QApplication>
#include <QQuickWindow>
#include <QTimer>
#include <chrono>
#include <cstdio>

#include "journey_stage.h"
#include "journeys.h"

namespace qt_bank {
namespace {

// A customer is not kept waiting at the end; a played journey must have told everything.
constexpr std::chrono::milliseconds kEndTime{300};
constexpr std::chrono::milliseconds kPlayedEndTime{10'000};
constexpr char kConsentKey[] = "consent";

std::unique_ptr<QSettings> settingsIn(const QString& folder) {
  if (folder.isEmpty()) return std::make_unique<QSettings>();
  return std::make_unique<QSettings>(folder + "/bank.ini", QSettings::IniFormat);
}

}  // namespace

BankApplication::BankApplication(const BankOptions& options)
    : options_(options),
      settings_(settingsIn(options.dataFolder)),
      risk_(options, Bank::userId()),
      bank_(risk_, storedConsent(), options.mouseIsFinger),
      privacy_(risk_, toasts_, options.mouseIsFinger) {
  QObject::connect(&privacy_, &PrivacyWindow::consentWanted, &bank_, &Bank::setConsent);
  QObject::connect(&bank_, &Bank::consentChanged, &bank_,
                   [this](bool hasConsent) { settings_->setValue(kConsentKey, hasConsent); });
}

std::optional<bool> BankApplication::storedConsent() const {
  if (!settings_->contains(kConsentKey)) return std::nullopt;
  return settings_->value(kConsentKey).toBool();
}

int BankApplication::run() {
  engine_.emplace();
  QQuickWindow* const window = showWindow();
  if (window == nullptr) return 1;
  if (!options_.script.isEmpty()) {
    QTimer::singleShot(0, &bank_, [this, window] { playScript(*window); });
  }
  return finish(QCoreApplication::exec());
}

QQuickWindow* BankApplication::showWindow() {
  qmlRegisterSingletonInstance("Tarnfield", 1, 0, "Bank", &bank_);
  qmlRegisterSingletonInstance("Tarnfield", 1, 0, "Toasts", &toasts_);
  QObject::connect(&*engine_, &QQmlEngine::warnings, &bank_, [this] { hasWarned_ = true; });
  engine_->load(QUrl("qrc:/qt_bank/qml/Main.qml"));
  auto* const window = qobject_cast<QQuickWindow*>(engine_->rootObjects().value(0));
  if (window == nullptr) return nullptr;
  window->resize(options_.size);
  options_.isFullScreen ? window->showFullScreen() : window->show();
  QObject::connect(&bank_, &Bank::privacyWanted, window,
                   [this, window] { privacy_.open(*window); });
  return window;
}

void BankApplication::playScript(QQuickWindow& window) {
  int status = 0;
  try {
    JourneyStage stage(bank_, window, privacy_, toasts_, options_.pictures);
    playJourney(options_.script, stage);
  } catch (const JourneyFault& fault) {
    std::fprintf(stderr, "qt_bank: %s\n", fault.what());
    status = 1;
  }
  QCoreApplication::exit(status);
}

int BankApplication::finish(int status) {
  privacy_.hide();
  // The screens end with the engine; what they leave to be sent is queued by the event loop.
  engine_.reset();
  QCoreApplication::processEvents();
  const bool isPlayed = !options_.script.isEmpty();
  const bool isAllSent = risk_.flush(isPlayed ? kPlayedEndTime : kEndTime);
  if (!isPlayed || status != 0) return status;
  if (hasWarned_) std::fprintf(stderr, "qt_bank: the screens have faults\n");
  if (!isAllSent) std::fprintf(stderr, "qt_bank: not everything was sent in time\n");
  return hasWarned_ || !isAllSent ? 1 : 0;
}

}  // namespace qt_bank
