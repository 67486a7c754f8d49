#include <QDialog>
#include <QQuickItem>
#include <QQuickWindow>
#include <QScrollArea>
#include <QScrollBar>
#include <QTouchEvent>
#include <QVBoxLayout>
#include <functional>

#include "test/qt/qt_world_test_support.h"

namespace quorvance::qt {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pointwise;

constexpr auto kPressed = TouchPanel::kPressed;
constexpr auto kMoved = TouchPanel::kMoved;
constexpr auto kStill = TouchPanel::kStill;
constexpr auto kLifted = TouchPanel::kLifted;

// Scaled displays have no exact pixels.
MATCHER_P(AreRows, expected, "") {
  if (arg.size() != expected.size()) return false;
  for (std::size_t i = 0; i < arg.size(); ++i) {
    if (!testing::Matches(Pointwise(DoubleNear(0.01), expected[i]))(arg[i])) return false;
  }
  return true;
}

using Rows = std::vector<Row>;

/// An item that takes touches, as a control does.
QQuickItem* addItem(QQuickItem& parent, QRectF place, bool takesTouches = true) {
  auto* const item = new QQuickItem(&parent);
  item->setPosition(place.topLeft());
  item->setSize(place.size());
  if (takesTouches) item->setAcceptedMouseButtons(Qt::LeftButton);
  return item;
}

struct Window : QQuickWindow {
  Window() {
    setGeometry(50, 40, 400, 300);
    show();
  }
  QQuickItem* add(QRectF place, bool takesTouches = true) {
    return addItem(*contentItem(), place, takesTouches);
  }
};

struct TouchRowsTest : testing::Test {
  Screen watch(QQuickItem* item) {
    return Screen(world.manager, ScreenListenerType::PINCODE, 7, item);
  }
  Screen watch(QWidget* widget, ViewOptions options = {}) {
    return Screen(world.manager, ScreenListenerType::PINCODE, 7, widget, options);
  }

  QtWorld world;
  TouchPanel panel;
};

TEST_F(TouchRowsTest, RowsOfAnItemAreWhatWasTouched) {
  Window window;
  QQuickItem* const scrolled = window.add({0, -100, 400, 900});
  QQuickItem* const root = addItem(*scrolled, {20, 130, 150, 100});
  root->setTransformOrigin(QQuickItem::TopLeft);
  root->setScale(2);
  addItem(*root, {0, 0, 10, 10});
  addItem(*root, {50, 20, 30, 30})->setProperty(kTagProperty, 7);
  Screen screen = watch(root);
  // The root begins at (20, 30) of the window.
  panel.touch(window, {{0, kPressed, {24, 32}, 0.25, {30, 10}}});
  panel.touch(window, {{0, kMoved, {121.5, 72.5}, 1, {10, 44}}});
  panel.touch(window, {{0, kStill, {121.5, 72.5}, 1, {10, 44}}});
  panel.touch(window, {{0, kLifted, {390, 10}, 0, {0, 0}}});
  panel.tap(window, {5, 290});  // below the root
  screen.finish();
  EXPECT_THAT(
      world.rows(),
      AreRows(Rows{{2, 1, 15, 0.25, kDown}, {50.75, 21.25, 22, 1, kMove}, {185, -10, 0, 0, kUp}}));
  EXPECT_THAT(world.tags(), ElementsAre(59000, 7));
}

TEST_F(TouchRowsTest, RowsOfAScrolledWidgetAreWhatWasTouched) {
  QScrollArea window;
  auto* const page = new QWidget;
  page->setFixedSize(300, 1000);
  auto* const field = new QWidget(page);
  field->setGeometry(0, 400, 300, 200);
  window.setWidget(page);
  window.setGeometry(10, 10, 320, 240);
  window.show();
  window.verticalScrollBar()->setValue(350);
  QWindow& handle = *window.windowHandle();
  Screen screen = watch(page);
  const QPointF origin = page->mapTo(&window, QPointF(0, 0));
  panel.press(handle, origin + QPointF(30, 410));
  panel.move(handle, origin + QPointF(40.5, 380));
  panel.lift(handle, origin + QPointF(-5, 380));
  screen.finish();
  EXPECT_THAT(world.rows(),
              AreRows(Rows{rowAt(30, 410, kDown), rowAt(40.5, 380, kMove), rowAt(-5, 380, kUp)}));
  EXPECT_EQ(world.tags().front(), 59000);
}

TEST_F(TouchRowsTest, SeveralFingersAreOneGestureOfTheFirst) {
  Window window;
  QQuickItem* const root = window.add({0, 0, 400, 200});
  struct Case {
    const char* what;
    std::vector<std::vector<PanelFinger>> events;
    Rows rows;
  };
  const QPointF a(10, 10), b(20, 20), c(30, 30), outside(10, 250);
  const Case cases[] = {
      {"a second finger changes, the first one lifted hands over",
       {{{1, kPressed, a}},
        {{1, kStill, a}, {2, kPressed, b, 1}},
        {{1, kLifted, a}, {2, kStill, b, 1}},
        {{2, kMoved, {21, 21}, 1}},
        {{2, kLifted, c, 1}}},
       {rowAt(10, 10, kDown),
        rowAt(10, 10, kMove),
        {10, 10, 6, 0, kMove},
        {21, 21, 6, 1, kMove},
        rowAt(30, 30, kUp)}},
      {"two at once, the first one first",
       {{{4, kPressed, b}, {3, kPressed, a, 1}}, {{4, kLifted, b}, {3, kLifted, a, 1}}},
       {rowAt(20, 20, kDown), rowAt(20, 20, kUp)}},
      {"what is outside is another's",
       {{{1, kPressed, outside}},
        {{1, kMoved, a}},
        {{1, kStill, a}, {2, kPressed, b}},
        {{1, kMoved, c}, {2, kStill, b}},
        {{1, kStill, c}, {2, kLifted, b}},
        {{1, kLifted, a}}},
       {rowAt(20, 20, kDown), rowAt(20, 20, kUp)}},
      {"nothing moved, nothing told",
       {{{1, kPressed, a}}, {{1, kStill, a}}, {{1, kLifted, a}}},
       {rowAt(10, 10, kDown), rowAt(10, 10, kUp)}},
  };
  for (const Case& one : cases) {
    Screen screen = watch(root);
    for (const auto& event : one.events) panel.touch(window, event);
    screen.finish();
    EXPECT_THAT(world.rows(), AreRows(one.rows)) << one.what;
  }
}

TEST_F(TouchRowsTest, WhatTheSystemTakesOverIsCancelled) {
  Window window;
  QQuickItem* const root = window.add({0, 0, 400, 300});
  const std::function<void()> takeOvers[] = {
      [&] { panel.cancel(window); },
      [&] {
        window.hide();
        window.show();
      },
      [&] {
        panel.press(window, {10, 10});
      },  // the end of the first was lost
  };
  for (const auto& takeOver : takeOvers) {
    const Screen screen = watch(root);
    panel.press(window, {10, 10});
    EXPECT_TRUE(world.motion->isRunning(MotionSensor::accelerometer));
    world.motion->calls = std::make_shared<CallList>();
    takeOver();
    EXPECT_THAT(*world.motion->calls, testing::Contains("stop accelerometer"));
    panel.lift(window, {10, 10});
  }
}

TEST_F(TouchRowsTest, AViewMayGoWhileItIsTouched) {
  Window window;
  auto* const root = window.add({0, 0, 400, 300});
  auto* const widget = new QWidget;
  widget->resize(100, 100);
  widget->show();
  Screen ofItem = watch(root);
  panel.press(window, {10, 10});
  delete root;
  EXPECT_FALSE(world.motion->isRunning(MotionSensor::accelerometer));
  panel.lift(window, {10, 10});
  ofItem.finish();
  EXPECT_THAT(world.rows(), AreRows(Rows{rowAt(10, 10, kDown)}));

  Screen ofWidget = watch(widget);
  panel.press(*widget->windowHandle(), {20, 20});
  delete widget;
  EXPECT_FALSE(world.motion->isRunning(MotionSensor::accelerometer));
  ofWidget.finish();
  EXPECT_THAT(world.rows(), AreRows(Rows{rowAt(20, 20, kDown)}));
}

TEST_F(TouchRowsTest, EachWindowAndEachPanelHasItsOwnFingers) {
  Window left, right;
  right.setPosition(500, 300);
  Screen ofLeft = watch(left.contentItem());
  Screen ofRight = watch(right.contentItem());
  const TouchPanel other;
  panel.press(left, {10, 10});
  other.press(right, {20, 20});
  panel.move(left, {11, 11});
  other.lift(right, {22, 22});
  other.tap(left, {30, 30});  // the same number of another panel
  panel.lift(left, {12, 12});
  ofLeft.finish();
  EXPECT_THAT(world.rows(), AreRows(Rows{rowAt(10, 10, kDown),
                                         rowAt(11, 11, kMove),
                                         rowAt(30, 30, kMove),
                                         {30, 30, 6, 0, kMove},
                                         rowAt(12, 12, kUp)}));
  ofRight.finish();
  EXPECT_THAT(world.rows(), AreRows(Rows{rowAt(20, 20, kDown), rowAt(22, 22, kUp)}));
}

TEST_F(TouchRowsTest, WhatLiesOverAnItemTakesItsTouches) {
  Window window;
  QQuickItem* const page = window.add({0, 0, 400, 300});
  QQuickItem* const button = addItem(*page, {0, 0, 50, 50});
  QQuickItem* const over = window.add({0, 0, 400, 300}, false);
  const auto rowsOf = [&](QQuickItem* item, QPointF place) {
    Screen screen = watch(item);
    const std::size_t before = world.screens().size();
    panel.tap(window, place);
    screen.finish();
    return world.screens().size() == before ? Rows() : world.rows();
  };
  const Rows tap = {rowAt(10, 10, kDown), rowAt(10, 10, kUp)};
  EXPECT_THAT(rowsOf(page, {10, 10}), AreRows(tap)) << "what takes nothing hides nothing";
  EXPECT_THAT(rowsOf(button, {10, 10}), AreRows(tap));
  QQuickItem* const dialog = addItem(*over, {0, 0, 100, 100});
  EXPECT_THAT(rowsOf(page, {10, 10}), IsEmpty());
  EXPECT_THAT(rowsOf(dialog, {10, 10}), AreRows(tap));
  dialog->setEnabled(false);
  EXPECT_THAT(rowsOf(page, {10, 10}), AreRows(tap)) << "Qt Quick passes disabled items over";
  dialog->setEnabled(true);
  over->setZ(-1);
  EXPECT_THAT(rowsOf(page, {10, 10}), AreRows(tap)) << "it lies below now";
  over->setZ(0);
  over->setClip(true);
  over->setSize({5, 5});
  EXPECT_THAT(rowsOf(page, {10, 10}), AreRows(tap)) << "it is clipped away";
}

TEST_F(TouchRowsTest, ADialogOverAWidgetTakesItsTouches) {
  QWidget window;
  window.resize(200, 200);
  auto* const page = new QWidget(&window);
  page->setGeometry(0, 0, 200, 200);
  auto* const sheet = new QWidget(&window);
  sheet->setGeometry(0, 0, 50, 50);
  window.show();
  Screen screen = watch(page);
  panel.tap(*window.windowHandle(), {10, 10});
  panel.press(*window.windowHandle(), {60, 60});
  QDialog dialog(&window);
  dialog.resize(100, 100);
  dialog.open();  // modal: the touch under way is the system's now
  panel.tap(*dialog.windowHandle(), {20, 20});
  panel.tap(*window.windowHandle(), {70, 70});
  EXPECT_FALSE(world.motion->isRunning(MotionSensor::accelerometer));
  screen.finish();
  EXPECT_THAT(world.rows(), AreRows(Rows{rowAt(60, 60, kDown)}));
}

// The widget takes no touches, so that Qt makes mouse events of them.
TEST_F(TouchRowsTest, TheMouseIsAFingerWhereItIsWantedAndNeverASecondOne) {
  QWidget window;
  window.resize(200, 200);
  window.show();
  QWindow& handle = *window.windowHandle();
  for (const bool isFinger : {false, true}) {
    Screen screen = watch(&window, {.mouseIsFinger = isFinger});
    panel.tap(handle, {10, 10});
    sendMouse(handle, QEvent::MouseButtonPress, {20, 20});
    sendMouse(handle, QEvent::MouseButtonRelease, {20, 20});
    screen.finish();
    Rows expected = {rowAt(10, 10, kDown), rowAt(10, 10, kUp)};
    if (isFinger) {
      expected.push_back({20, 20, 0, 0, kDown});
      expected.push_back({20, 20, 0, 0, kUp});
    }
    EXPECT_THAT(world.rows(), AreRows(expected)) << isFinger;
  }
}

TEST_F(TouchRowsTest, AFingerThatIsPutDownAgainBeginsAnew) {
  Window window;
  Screen screen(world.manager, ScreenListenerType::PINCODE, 7, window.contentItem(),
                {.mouseIsFinger = true});
  sendMouse(window, QEvent::MouseButtonPress, {20, 20});  // a popup took its release
  sendMouse(window, QEvent::MouseButtonPress, {30, 30});
  sendMouse(window, QEvent::MouseButtonRelease, {30, 30});
  screen.finish();
  EXPECT_THAT(world.rows(),
              AreRows(Rows{{20, 20, 0, 0, kDown}, {30, 30, 0, 0, kDown}, {30, 30, 0, 0, kUp}}));
}

// As that of a QQuickWidget, which is sent its widget's touches.
TEST_F(TouchRowsTest, AWindowThatIsNeverShownIsToldTouchesOnceEach) {
  QQuickWindow window;
  window.contentItem()->setSize({100, 100});
  QPointingDevice device;
  const auto send = [&](QEvent::Type type, quint64 timestamp) {
    const auto state = type == QEvent::TouchBegin ? kPressed : kLifted;
    QTouchEvent event(type, &device, {}, {QEventPoint(1, state, {}, {})});
    event.setTimestamp(timestamp);
    QCoreApplication::sendEvent(&window, &event);
  };
  Screen screen = watch(window.contentItem());
  send(QEvent::TouchBegin, 100);
  send(QEvent::TouchBegin, 100);
  send(QEvent::TouchEnd, 200);
  send(QEvent::TouchBegin, 100);
  send(QEvent::TouchEnd, 200);
  send(QEvent::TouchBegin, 300);
  send(QEvent::TouchEnd, 400);
  screen.finish();
  std::vector<double> actions;
  for (const Row& row : world.rows()) actions.push_back(row.back());
  EXPECT_THAT(actions, ElementsAre(kDown, kUp, kDown, kUp));
}

// As one that shows a dialog, whose event loop runs inside of the event.
TEST_F(TouchRowsTest, ARecognizerMayRunAnEventLoop) {
  Window window, dialog;
  const TouchPanel other;
  QQuickItem* const content = window.contentItem();
  for (QWindow* const touched : {static_cast<QWindow*>(&dialog), static_cast<QWindow*>(&window)}) {
    const std::vector views = {viewOf(content), viewOf(content), viewOf(dialog.contentItem())};
    bool hasRun = false;
    Rows seen;
    views[0]->addGestureRecognizer(std::make_shared<QuorvanceGestureRecognizer>([&](auto&) {
      if (!std::exchange(hasRun, true)) other.touch(*touched, {{0, kPressed, {70, 70}, 0.25}});
    }));
    for (const auto& view : views) {
      view->addGestureRecognizer(std::make_shared<QuorvanceGestureRecognizer>([&](auto& told) {
        seen.push_back({told.location().x, told.force()});
      }));
    }
    panel.press(window, {10, 10});
    Rows expected = {{70, 0.25}, {10, 0.5}, {10, 0.5}};
    if (touched == &window) expected.insert(expected.begin(), {70, 0.25});
    EXPECT_THAT(seen, AreRows(expected));
    other.lift(*touched, {70, 70});
    panel.lift(window, {10, 10});
  }
}

TEST_F(TouchRowsTest, APanelWithoutPressureTellsNone) {
  Window window;
  Screen screen = watch(window.contentItem());
  TouchPanel(false).tap(window, {10, 10});
  screen.finish();
  EXPECT_THAT(world.rows(), AreRows(Rows{{10, 10, 6, 0, kDown}, {10, 10, 6, 0, kUp}}));
}

/// Notes which events reach it.
struct NotingItem : QQuickItem {
  using QQuickItem::QQuickItem;
  void touchEvent(QTouchEvent* event) override { seen.push_back(event->type()); }
  std::vector<QEvent::Type> seen;
};

TEST_F(TouchRowsTest, NothingIsTakenAwayFromTheApplication) {
  Window window;
  auto* const item = new NotingItem(window.contentItem());
  item->setSize({400, 300});
  item->setAcceptTouchEvents(true);
  const auto seenByTheItem = [&] {
    panel.press(window, {10, 10});
    panel.move(window, {20, 20});
    panel.lift(window, {20, 20});
    return std::exchange(item->seen, {});
  };
  const auto unwatched = seenByTheItem();
  const Screen screen = watch(item);
  EXPECT_EQ(seenByTheItem(), unwatched);
  EXPECT_THAT(unwatched, ElementsAre(QEvent::TouchBegin, QEvent::TouchUpdate, QEvent::TouchEnd));
}

}  // namespace
}  // namespace quorvance::qt
