// An application of Qt's that ends: qt_child quit URL FOLDER, qt_child outlive FOLDER
// or qt_child worker FOLDER.

#include <qpa/qwindowsysteminterface.h>
#include <QApplication>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTimer>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "quorvance/qt/qt.h"

using namespace quorvance;

namespace {

constexpr int kVerdicts = 20;
constexpr std::chrono::milliseconds kLook{5};

Platform platformOver(const std::string& folder) {
  LinuxPlatformOptions options;
  options.dataFolder = folder;
  return qt::makePlatform(options);
}

void say(const char* what) {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  std::printf("%s %lld\n", what, static_cast<long long>(std::chrono::nanoseconds(now).count()));
  std::fflush(stdout);
}

/// Ends with verdicts and a screen under way, as when its user closes the last window: once there
/// is FOLDER.go.
int quit(int argc, char** argv) {
  QApplication application(argc, argv);
  QuorvanceManager::usePlatform(platformOver(argv[3]));
  const auto manager = QuorvanceManager::shared();
  manager->setupWithServerUrl(argv[2], "user-17");
  QQuickWindow window;
  window.show();
  const qt::Screen screen(manager, ScreenListenerType::MAIN_SCREEN, 1, window.contentItem());
  for (int i = 0; i < kVerdicts; ++i) {
    qt::riskForCheckPoint(*manager, General(), {}, &application,
                          [](const Verdict&) { say("a verdict"); });
  }
  QTimer look;
  QObject::connect(&look, &QTimer::timeout, [go = std::string(argv[3]) + ".go"] {
    if (std::filesystem::exists(go)) QApplication::quit();
  });
  look.start(kLook);
  const int status = QApplication::exec();
  say("leaving");
  return status;
}

/// Uses everything after the end of its application object, and again with another one.
int outlive(int argc, char** argv) {
  qt::EventLoopQueue early;  // there is no application object yet
  early.post([] { say("early"); });
  auto manager = std::make_shared<QuorvanceManager>(platformOver(argv[2]));
  std::unique_ptr<qt::EventLoopQueue> queue;
  for (int round = 0; round < 2; ++round) {
    QApplication application(argc, argv);
    auto later = std::make_unique<qt::EventLoopQueue>();
    manager = std::make_shared<QuorvanceManager>(platformOver(argv[2]));
    manager->setupWithServerUrl("http://127.0.0.1:1/", "user-17");
    QQuickWindow window;
    window.show();
    qt::Screen screen(manager, ScreenListenerType::MAIN_SCREEN, 1, window.contentItem());
    later->post([] { QApplication::quit(); });
    QApplication::exec();
    queue = std::move(later);
  }
  queue->post([] { say("late"); });
  manager->arriveToCheckPoint(General());
  manager->startNewScreenListener(ScreenListenerType::GENERAL, 1, nullptr)->finishScreenListener();
  manager->flush(std::chrono::milliseconds(100));
  manager.reset();
  queue.reset();
  say("done");
  return 0;
}

/// Uses the library in a worker before there is an application object, which is then touched while
/// that worker is alive.
int worker(int argc, char** argv) {
  std::promise<void> isUsed, mayEnd;
  std::thread early([&] {
    platformOver(argv[2]);
    isUsed.set_value();
    mayEnd.get_future().wait();
  });
  isUsed.get_future().wait();
  QApplication application(argc, argv);
  QQuickWindow window;
  window.setGeometry(0, 0, 100, 100);
  window.show();
  QApplication::processEvents();
  const auto view = qt::viewOf(window.contentItem(), {.mouseIsFinger = true});
  view->addGestureRecognizer(std::make_shared<QuorvanceGestureRecognizer>(
      [](const QuorvanceGestureRecognizer&) { say("touched"); }));
  QWindowSystemInterface::handleMouseEvent(&window, {10, 10}, {10, 10}, Qt::LeftButton,
                                           Qt::LeftButton, QEvent::MouseButtonPress);
  QApplication::processEvents();
  mayEnd.set_value();
  early.join();
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_QUICK_BACKEND", "software");
  const std::string shape = argc > 1 ? argv[1] : "";
  if (shape == "quit" && argc == 4) return quit(argc, argv);
  if (shape == "outlive" && argc == 3) return outlive(argc, argv);
  if (shape == "worker" && argc == 3) return worker(argc, argv);
  return 2;
}
