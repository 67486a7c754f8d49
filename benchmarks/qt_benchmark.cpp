// What the event filter adds to the input of an application of Qt's: aim at most 2 us an event, on
// a page of 50 items. Of two rows that stand together the difference is what counts.

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QPointingDevice>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTouchEvent>
#include <memory>

#include "platform/testing/test_world.h"
#include "quorvance/qt/qt.h"

namespace quorvance::qt {
namespace {

constexpr int kItems = 50;
// Rows are recorded in a screen of their own until it is full.
constexpr int kMovesOfAScreen = 390;

/// A window that takes touches, and a manager whose server wants them.
struct TouchedPage {
  TouchedPage() {
    world.http->answer("getSdkConfiguration/", okReply(R"({"enable_bio_collection": true})"));
    manager = std::make_shared<QuorvanceManager>(world.platform());
    manager->setupWithServerUrl("http://risk.test/", "u1");
    world.time->run();
    window.setGeometry(0, 0, 400, 800);
    for (int i = 0; i < kItems; ++i) {
      auto* const item = new QQuickItem(page());
      item->setSize({400, 16});
      item->setY(16.0 * (kItems - 1 - i));
      item->setAcceptedMouseButtons(Qt::LeftButton);
    }
    page()->setAcceptTouchEvents(true);
  }
  QQuickItem* page() const { return window.contentItem(); }

  void watch() {
    screen = Screen();
    screen = Screen(manager, ScreenListenerType::PINCODE, 1, page());
    send(QEvent::TouchBegin, QEventPoint::Pressed);
  }
  /// Under the last of the items, so that all of them are looked at: a point that is made so lies
  /// in the window's corner, whatever its place in the scene.
  void send(QEvent::Type type, QEventPoint::State state) {
    const QPointF place(0, 0);
    QTouchEvent event(type, &panel, {}, {QEventPoint(1, state, place, place)});
    QCoreApplication::sendEvent(&window, &event);
  }

  TestWorld world;
  std::shared_ptr<QuorvanceManager> manager;
  /// Takes what reaches it and does nothing with it: what is measured is the way there.
  struct QuietWindow : QQuickWindow {
    bool event(QEvent* event) override {
      return event->type() == QEvent::TouchUpdate || event->type() == QEvent::TouchBegin ||
             QQuickWindow::event(event);
    }
  } window;
  QPointingDevice panel{"panel",
                        1,
                        QInputDevice::DeviceType::TouchScreen,
                        QPointingDevice::PointerType::Finger,
                        QInputDevice::Capability::Position,
                        10,
                        0};
  Screen screen;
};

void moveWithoutTheFilter(benchmark::State& state) {
  TouchedPage touched;
  for (auto _ : state) touched.send(QEvent::TouchUpdate, QEventPoint::Updated);
}
BENCHMARK(moveWithoutTheFilter);

// The finger is not on the watched item.
void moveOfAnother(benchmark::State& state) {
  TouchedPage touched;
  touched.watch();
  touched.send(QEvent::TouchBegin, QEventPoint::Released);
  for (auto _ : state) touched.send(QEvent::TouchUpdate, QEventPoint::Updated);
}
BENCHMARK(moveOfAnother);

// With its row, which the library makes of it.
void moveRecorded(benchmark::State& state) {
  TouchedPage touched;
  touched.watch();
  int left = kMovesOfAScreen;
  for (auto _ : state) {
    touched.send(QEvent::TouchUpdate, QEventPoint::Updated);
    if (--left > 0) continue;
    state.PauseTiming();
    touched.watch();
    touched.world.http->dropAll();
    left = kMovesOfAScreen;
    state.ResumeTiming();
  }
}
BENCHMARK(moveRecorded);

// What is no touch: a paint event, a timer.
void anotherEvent(benchmark::State& state) {
  TouchedPage touched;
  if (state.range(0) != 0) touched.watch();
  QObject receiver;
  for (auto _ : state) {
    QEvent event(QEvent::User);
    QCoreApplication::sendEvent(&receiver, &event);
  }
}
BENCHMARK(anotherEvent)->ArgName("watched")->Arg(0)->Arg(1);

}  // namespace
}  // namespace quorvance::qt

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_QUICK_BACKEND", "software");
  const QApplication application(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
