#include "touch_driver.h"

#include <QPointingDevice>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <QWidget>

namespace qt_bank {
namespace {

constexpr int kFinger = 0;
constexpr int kDragSteps = 8;

QQuickItem* findBelow(QQuickItem& item, const QString& name) {
  if (!item.isVisible()) return nullptr;
  if (item.objectName() == name) return &item;
  for (QQuickItem* const child : item.childItems()) {
    if (QQuickItem* const found = findBelow(*child, name); found != nullptr) return found;
  }
  return nullptr;
}

}  // namespace

QQuickItem* findVisible(QQuickWindow& window, const QString& name) {
  return findBelow(*window.contentItem(), name);
}

TouchDriver::TouchDriver() : device_(QTest::createTouchDevice()) {}

TouchDriver::~TouchDriver() = default;

bool TouchDriver::tap(QQuickWindow& window, const QString& name) {
  const QQuickItem* const item = findVisible(window, name);
  if (item == nullptr || !item->isEnabled()) return false;
  const QPoint middle = item->mapToScene({item->width() / 2, item->height() / 2}).toPoint();
  if (!QRect(QPoint(), window.size()).contains(middle)) return false;
  tapAt(window, middle);
  return true;
}

bool TouchDriver::tap(QWidget& window, const QString& name) {
  const auto* const widget = window.findChild<QWidget*>(name);
  if (widget == nullptr || !widget->isVisible() || !widget->isEnabled()) return false;
  tapAt(*window.windowHandle(), widget->mapTo(&window, widget->rect().center()));
  return true;
}

void TouchDriver::drag(QWindow& window, QPoint from, QPoint to) {
  QTest::touchEvent(&window, device_.get()).press(kFinger, from, &window);
  for (int i = 1; i <= kDragSteps; ++i) {
    QTest::touchEvent(&window, device_.get())
        .move(kFinger, from + (to - from) * i / kDragSteps, &window);
  }
  QTest::touchEvent(&window, device_.get()).release(kFinger, to, &window);
}

void TouchDriver::tapAt(QWindow& window, QPoint place) {
  QTest::touchEvent(&window, device_.get()).press(kFinger, place, &window);
  QTest::touchEvent(&window, device_.get()).release(kFinger, place, &window);
}

}  // namespace qt_bank
