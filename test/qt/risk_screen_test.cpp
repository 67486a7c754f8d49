#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlProperty>
#include <QQuickItem>
#include <QQuickWindow>

#include "test/qt/qt_world_test_support.h"

namespace quorvance::qt {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

/// A window that shows an item of QML, which holds a RiskScreen by the name of "screen".
struct RiskScreenTest : testing::Test {
  RiskScreenTest() {
    registerQmlTypes(world.manager);
    window.setGeometry(0, 0, 200, 200);
    window.show();
  }
  ~RiskScreenTest() override { registerQmlTypes(); }

  /// With what else there is in the page.
  void load(const QByteArray& screen, const QByteArray& others = "") {
    QQmlComponent component(&engine);
    component.setData(
        "import QtQuick; import QtQuick.Controls.Basic\nimport Quorvance 1.0\n"
        "Item { width: 200; height: 200; property alias screen: risk; " +
            others + "\n\nRiskScreen { id: risk; " + screen + " } }",
        QUrl("page.qml"));
    page.reset(qobject_cast<QQuickItem*>(component.create()));
    ASSERT_TRUE(page) << component.errorString().toStdString();
    screenObject = page->property("screen").value<QObject*>();
    page->setParentItem(window.contentItem());
  }
  bool isWatching() const { return screenObject->property("watching").toBool(); }
  void tap() { panel.tap(window, {10, 20}); }
  /// "type actionId rows" of each screen that has ended.
  std::vector<std::string> screens() const {
    std::vector<std::string> told;
    for (const Json& body : world.screens()) {
      told.push_back(body.at("actionType").get<std::string>() + " " +
                     std::to_string(body.at("actionId").get<int>()) + " " +
                     std::to_string(body.at("eventList").size()));
    }
    return told;
  }

  QtWorld world;
  TouchPanel panel;
  QQuickWindow window;
  QQmlEngine engine;
  std::unique_ptr<QQuickItem> page;
  QObject* screenObject = nullptr;
};

TEST_F(RiskScreenTest, WatchesItsParentWhileThatIsVisible) {
  load("type: 'LOGIN_FORM'; actionId: 7");
  EXPECT_TRUE(isWatching());
  tap();
  page->setVisible(false);
  EXPECT_FALSE(isWatching());
  tap();
  page->setVisible(true);
  tap();
  tap();
  page.reset();
  EXPECT_THAT(screens(), ElementsAre("LOGIN_FORM 7 2", "LOGIN_FORM 7 4"));
}

TEST_F(RiskScreenTest, AChangeBeginsAnotherScreen) {
  load("type: 'LOGIN_FORM'; active: false");
  EXPECT_FALSE(isWatching());
  screenObject->setProperty("active", true);
  tap();
  screenObject->setProperty("actionId", 8);
  EXPECT_THAT(screens(), ElementsAre("LOGIN_FORM 0 2"));
  auto other = std::make_unique<QQuickItem>(window.contentItem());
  other->setSize({5, 5});
  tap();
  screenObject->setProperty("view", QVariant::fromValue(other.get()));
  tap();  // the other one does not lie there
  EXPECT_THAT(screens(), ElementsAre("LOGIN_FORM 0 2", "LOGIN_FORM 8 2"));
  other.reset();
  EXPECT_FALSE(isWatching()) << "the parent was not asked for";
  QQmlProperty(screenObject, "view").reset();
  EXPECT_TRUE(isWatching());
  tap();
  screenObject->setProperty("active", false);
  EXPECT_EQ(screens().size(), 3U);
}

TEST_F(RiskScreenTest, BindingsFollowWhetherItWatches) {
  load("type: 'LOGIN_FORM'; onWatchingChanged: changes += 1",
       "property int changes: 0; property bool bound: risk.watching");
  const auto expect = [this](bool isWatched, int changes) {
    EXPECT_EQ(page->property("bound").toBool(), isWatched) << changes;
    EXPECT_EQ(isWatching(), isWatched) << changes;
    EXPECT_EQ(page->property("changes").toInt(), changes);
  };
  expect(true, 1);
  screenObject->setProperty("actionId", 8);
  expect(true, 1);
  screenObject->setProperty("active", false);
  expect(false, 2);
  screenObject->setProperty("active", true);
  expect(true, 3);
  screenObject->setProperty("type", "NO_SUCH_FORM");
  expect(false, 4);
}

// Its items stay visible.
TEST_F(RiskScreenTest, AHiddenWindowHidesItsItems) {
  load("type: 'LOGIN_FORM'");
  const auto hideAndShow = [this](const char* what) {
    const std::size_t before = screens().size();
    tap();
    window.hide();
    EXPECT_FALSE(isWatching()) << what;
    EXPECT_EQ(screens().size(), before + 1) << what;
    window.show();
    EXPECT_TRUE(isWatching()) << what;
  };
  hideAndShow("a page");
  screenObject->setProperty("view", QVariant::fromValue(window.contentItem()));
  hideAndShow("the window's content");
  screenObject->setProperty("view", QVariant::fromValue(page.get()));
  QQuickWindow other;
  other.show();
  page->setParentItem(other.contentItem());
  window.hide();
  EXPECT_TRUE(isWatching()) << "it is in another one";
  other.hide();
  EXPECT_FALSE(isWatching());
  page->setParentItem(window.contentItem());
  window.show();
  EXPECT_TRUE(isWatching());
}

// It sends the window again what it held back.
TEST_F(RiskScreenTest, WhatAFlickableHoldsBackIsTouchedOnce) {
  for (const bool isMouse : {false, true}) {
    for (const bool isLong : {false, true}) {
      load("type: 'LOGIN_FORM'; mouseIsFinger: true",
           "property alias area: inner; Flickable { anchors.fill: parent; contentHeight: 900; "
           "pressDelay: " +
               QByteArray(isLong ? "1" : "60000") +
               "; MouseArea { id: inner; width: 200; height: 900 } }");
      auto* const area = page->property("area").value<QObject*>();
      const auto isPressed = [area] { return area->property("pressed").toBool(); };
      const std::size_t before = screens().size();
      isMouse ? sendMouse(window, QEvent::MouseButtonPress, {10, 20})
              : panel.press(window, {10, 20});
      while (isLong && !isPressed()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
      }
      isMouse ? sendMouse(window, QEvent::MouseButtonRelease, {10, 20})
              : panel.lift(window, {10, 20});
      page->setVisible(false);
      ASSERT_EQ(screens().size(), before + 1);
      EXPECT_EQ(screens().back(), "LOGIN_FORM 0 2") << isMouse << isLong;
    }
  }
}

// Of the popups all lie in one layer over the whole window.
TEST_F(RiskScreenTest, APopupTakesItsOwnTouchesAndAModalOneAll) {
  load("type: 'LOGIN_FORM'",
       "property alias popup: over; Popup { id: over; x: 100; y: 100; width: 50; height: 50 }");
  auto* const popup = page->property("popup").value<QObject*>();
  popup->setProperty("closePolicy", 0);
  const auto touchesWhile = [&](bool isModal) {
    popup->setProperty("modal", isModal);
    QMetaObject::invokeMethod(popup, "open");
    tap();
    panel.tap(window, {120, 120});
    QMetaObject::invokeMethod(popup, "close");
    page->setVisible(false);
    page->setVisible(true);
    return screens().empty() ? "" : screens().back();
  };
  EXPECT_EQ(touchesWhile(false), "LOGIN_FORM 0 2");
  EXPECT_EQ(screens().size(), 1U);
  touchesWhile(true);
  EXPECT_EQ(screens().size(), 1U) << "a screen without touches is not sent";
}

TEST_F(RiskScreenTest, WhatCannotBeWatchedIsNot) {
  testing::internal::CaptureStderr();
  load("type: 'NO_SUCH_FORM'");
  EXPECT_FALSE(isWatching());
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              AllOf(HasSubstr("page.qml:5"), HasSubstr("NO_SUCH_FORM")));
  for (const char* const actionId : {"0.5", "NaN", "1e19"}) {
    load(QByteArray("type: 'LOGIN_FORM'; actionId: ") + actionId);
    EXPECT_FALSE(isWatching()) << actionId;
  }
  world.manager.reset();
  load("type: 'LOGIN_FORM'");
  EXPECT_FALSE(isWatching()) << "its manager has ended";
  tap();
}

}  // namespace
}  // namespace quorvance::qt
