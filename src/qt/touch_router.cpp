#include "qt/touch_router.h"

#include <QMouseEvent>
#include <QPointer>
#include <QPointingDevice>
#include <QTouchEvent>
#include <QWindow>
#include <algorithm>
#include <limits>

#include "qt/application_thread.h"

namespace quorvance::qt {
namespace {

/// No finger of a panel has it.
constexpr std::uint64_t kMouseFinger = std::numeric_limits<std::uint64_t>::max();

/// Fingers of two panels may have the same number.
std::uint64_t fingerOf(const QEventPoint& point) {
  const QPointingDevice* const panel = point.device();
  const auto system = panel == nullptr ? 0 : static_cast<std::uint64_t>(panel->systemId());
  return (system << 32) ^ static_cast<std::uint32_t>(point.id());
}

Touch touchOf(const QEventPoint& point, bool hasPressure) {
  const QSizeF diameters = point.ellipseDiameters();
  return {.force = hasPressure ? point.pressure() : 0,
          .majorRadius = std::max(diameters.width(), diameters.height()) / 2};
}

/// A window of an embedded view's own has a place in its parent's.
bool isIn(const QWindow& window, const QWindow* outer, QPointF& offset) {
  offset = {};
  for (const QWindow* at = &window; at != nullptr; at = at->parent()) {
    if (at == outer) return true;
    offset += at->position();
  }
  return false;
}

bool isMadeOfTouch(const QMouseEvent& event) {
  return event.source() != Qt::MouseEventNotSynthesized ||
         (event.device() != nullptr &&
          event.device()->type() == QInputDevice::DeviceType::TouchScreen);
}

}  // namespace

void TouchRouter::watch(const std::shared_ptr<TouchedView>& view) {
  QCoreApplication* const application = QCoreApplication::instance();
  static QPointer<TouchRouter>
      router;  // gone with the application object, which may be another now
  if (!router) router = new TouchRouter(application);
  application->installEventFilter(router);  // the latest one sees an event first
  router->views_.push_back(view);
}

bool TouchRouter::eventFilter(QObject* receiver, QEvent* event) {
  const auto window = [receiver] { return qobject_cast<QWindow*>(receiver); };
  switch (event->type()) {
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
      if (receiver->isWindowType()) touch(*window(), static_cast<const QTouchEvent&>(*event));
      break;
    case QEvent::TouchCancel:
    case QEvent::Hide:
      if (receiver->isWindowType()) cancel(*window());
      break;
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
      if (receiver->isWindowType()) mouse(*window(), static_cast<const QMouseEvent&>(*event));
      break;
    default:
      break;
  }
  return false;
}

void TouchRouter::touch(QWindow& window, const QTouchEvent& event) {
  // The first fingers of a window: whatever was down there has been lifted unseen.
  if (event.type() == QEvent::TouchBegin) cancel(window);
  const QInputDevice* const panel = event.device();
  const bool hasPressure =
      panel != nullptr && panel->hasCapability(QInputDevice::Capability::Pressure);
  fingers_.clear();
  for (const QEventPoint& point : event.points()) {
    fingers_.push_back(
        {fingerOf(point), point.state(), point.position(), touchOf(point, hasPressure)});
  }
  route(window, false);
}

void TouchRouter::mouse(QWindow& window, const QMouseEvent& event) {
  const bool isLeft = event.type() == QEvent::MouseMove ? event.buttons().testFlag(Qt::LeftButton)
                                                        : event.button() == Qt::LeftButton;
  if (!isLeft || isMadeOfTouch(event)) return;
  const auto state = event.type() == QEvent::MouseButtonPress ? QEventPoint::Pressed
                     : event.type() == QEvent::MouseMove      ? QEventPoint::Updated
                                                              : QEventPoint::Released;
  fingers_.assign({{kMouseFinger, state, event.position(), {}}});
  route(window, true);
}

void TouchRouter::cancel(QWindow& window) {
  forViewsOf(window, [](TouchedView& view, QPointF /*offset*/) { view.cancel(); });
}

void TouchRouter::route(QWindow& window, bool ofMouse) {
  QPointF moved;
  forViewsOf(window, [&](TouchedView& view, QPointF offset) {
    if (ofMouse && !view.isMouseFinger()) return;
    for (WindowTouch& one : fingers_) one.place += offset - moved;
    moved = offset;
    view.take(fingers_);
  });
}

template <class Call>
void TouchRouter::forViewsOf(QWindow& window, Call call) {
  bool hasEnded = false;
  QPointF offset;
  for (const auto& watched : views_) {
    const auto view = watched.lock();
    hasEnded = hasEnded || !view;
    if (view && isIn(window, view->window(), offset)) call(*view, offset);
  }
  if (!hasEnded) return;
  std::erase_if(views_, [](const auto& watched) { return watched.expired(); });
  if (views_.empty()) parent()->removeEventFilter(this);
}

}  // namespace quorvance::qt
