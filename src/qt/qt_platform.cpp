#include "quorvance/qt/qt_platform.h"

#include <QGuiApplication>
#include <QPointer>
#include <QScreen>
#include <mutex>
#include <string>
#include <utility>

#include "qt/application_thread.h"
#include "quorvance/qt/event_loop_queue.h"
#include "quorvance/qt/qt_motion.h"

namespace quorvance::qt {
namespace {

/// The main screen as it was last told. Told on the application's thread, read on the fact lane.
class LastScreenFacts : public FactSource<ScreenFacts> {
 public:
  ScreenFacts read() override {
    const std::lock_guard lock(mutex_);
    return facts_;
  }
  std::string origin(std::string_view /*field*/) const override { return "QScreen"; }

  void tell(const QScreen* screen) {
    ScreenFacts facts;
    if (screen != nullptr) {
      const QSizeF logical = screen->size();
      const QSizeF native = logical * screen->devicePixelRatio();
      facts = {logical.width(), logical.height(), native.width(), native.height()};
    }
    const std::lock_guard lock(mutex_);
    facts_ = facts;
  }

 private:
  std::mutex mutex_;
  ScreenFacts facts_;
};

/// Follows the primary screen; owned by the application object.
class ScreenWatcher : public QObject {
 public:
  ScreenWatcher(std::weak_ptr<LastScreenFacts> facts, QGuiApplication* application)
      : QObject(application), facts_(std::move(facts)) {
    connect(application, &QGuiApplication::primaryScreenChanged, this, &ScreenWatcher::follow);
    follow(QGuiApplication::primaryScreen());
  }

 private:
  void follow(QScreen* screen) {
    if (screen_) screen_->disconnect(this);
    screen_ = screen;
    if (screen != nullptr) {
      const auto tellAgain = [this] { tell(); };
      connect(screen, &QScreen::geometryChanged, this, tellAgain);
      connect(screen, &QScreen::physicalDotsPerInchChanged, this, tellAgain);
    }
    tell();
  }

  void tell() {
    if (const auto facts = facts_.lock()) {
      facts->tell(screen_);
    } else {
      deleteLater();
    }
  }

  const std::weak_ptr<LastScreenFacts> facts_;
  QPointer<QScreen> screen_;
};

/// "bank.com" and "app" as "com.bank.app".
std::string identifierOfApplication() {
  const QString desktopFile = QGuiApplication::desktopFileName();
  if (!desktopFile.isEmpty()) return desktopFile.toStdString();
  QStringList words = QCoreApplication::organizationDomain().split('.', Qt::SkipEmptyParts);
  std::reverse(words.begin(), words.end());
  words.append(QCoreApplication::applicationName());
  return words.join('.').toStdString();
}

void addApplication(HostApplication& host) {
  if (host.identifier.empty()) host.identifier = identifierOfApplication();
  const QString version = QCoreApplication::applicationVersion();
  if (!host.shortVersion && !version.isEmpty()) host.shortVersion = version.toStdString();
}

}  // namespace

Platform makePlatform(LinuxPlatformOptions options) {
  if (!isOnApplicationThread()) return makeLinuxPlatform(std::move(options));
  addApplication(options.hostApplication);
  if (!options.mainQueue) options.mainQueue = std::make_shared<EventLoopQueue>();
  Platform platform = makeLinuxPlatform(std::move(options));
  if (auto motion = makeMotionSource(platform.mainQueue)) platform.motion = std::move(motion);
  if (auto* const application = qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
    const auto screen = std::make_shared<LastScreenFacts>();
    new ScreenWatcher(screen, application);
    platform.facts.screen = screen;
  }
  return platform;
}

}  // namespace quorvance::qt
