// Qt's headers first, with its keywords, as an application has them.
#include <QApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTimer>

#include <quorvance/qt/qt.h>

#include <chrono>
#include <cstdio>

namespace qt = quorvance::qt;

// Prints the verdict on a login, from the event loop; ends with 1 when there is none.
int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_QUICK_BACKEND", "software");
  QApplication application(argc, argv);
  if (argc != 2) return 2;
  quorvance::QuorvanceManager::usePlatform(qt::makePlatform());
  qt::registerQmlTypes();
  const auto manager = quorvance::QuorvanceManager::shared();
  manager->setupWithServerUrl(argv[1], "user-17");
  QQuickWindow window;
  window.show();
  const qt::Screen screen(manager, quorvance::ScreenListenerType::LOGIN_FORM, 1,
                          window.contentItem());
  qt::riskForCheckPoint(*manager, quorvance::Login({.userId = "user-17"}), {}, &application,
                        [](const quorvance::Verdict& verdict) {
                          std::printf("%s %s\n", QuorvanceSDKVersionString,
                                      verdict.risk.stringValue().c_str());
                          const bool isThere = verdict.reason == quorvance::VerdictReason::answered;
                          QCoreApplication::exit(isThere ? 0 : 1);
                        });
  return QApplication::exec();
}
