#include "qt/touch_router.h"

#include <QMouseEvent>
#include <QPointer>
#include <QPointingDevice>
#include <QTouchEvent>
#include <QWindow>
#include <algorithm>
#include <cstdint>
#include <utility>

#include "qt/application_thread.h"

namespace quorvance::qt {
namespace {

constexpr Finger kMouseFinger = {-1, -1};
/// In milliseconds; for how long an item may hold a press back.
constexpr std::uint64_t kLongestDelay = 60'000;

std::int64_t panelOf(const QPointerEvent& event) {
  return event.device() == nullptr ? 0 : event.device()->systemId();
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
  const bool isNew = !router || router->views_.empty();
  if (!router) router = new TouchRouter(application);
  router->views_.push_back(view);
  // The latest one sees an event first. While one is shown to the filters their list must stand.
  const auto install = [application] {
    if (!router->views_.empty()) application->installEventFilter(router);
  };
  isNew ? install() : void(QMetaObject::invokeMethod(router, install, Qt::QueuedConnection));
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
      if (receiver->isWindowType()) {
        cancel(*window(), panelOf(static_cast<const QTouchEvent&>(*event)));
      }
      break;
    case QEvent::Hide:
      if (receiver->isWindowType()) cancel(*window(), std::nullopt);
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

bool TouchRouter::isSentAgain(const QWindow& window, const QPointerEvent& event) {
  if (event.type() != QEvent::TouchBegin && event.type() != QEvent::MouseButtonPress) return false;
  const std::uint64_t time = event.timestamp();
  // One without a window of the system's is inside of a widget, which sends it all that it sees.
  std::uint64_t& last = window.handle() != nullptr ? lastPress_ : lastInnerPress_;
  const bool isLate = time != 0 && last - time < kLongestDelay;
  if (isLate && !event.spontaneous()) return true;
  last = time;
  return false;
}

void TouchRouter::touch(QWindow& window, const QTouchEvent& event) {
  if (isSentAgain(window, event)) return;
  // The panel's first fingers on the window: whatever was down there has been lifted unseen.
  const std::int64_t panelId = panelOf(event);
  if (event.type() == QEvent::TouchBegin) cancel(window, panelId);
  const QInputDevice* const panel = event.device();
  const bool hasPressure =
      panel != nullptr && panel->hasCapability(QInputDevice::Capability::Pressure);
  std::vector<WindowTouch> fingers = std::exchange(fingers_, {});
  fingers.clear();
  for (const QEventPoint& point : event.points()) {
    fingers.push_back(
        {{panelId, point.id()}, point.state(), point.position(), touchOf(point, hasPressure)});
  }
  route(window, std::move(fingers), false);
}

void TouchRouter::mouse(QWindow& window, const QMouseEvent& event) {
  const bool isLeft = event.type() == QEvent::MouseMove ? event.buttons().testFlag(Qt::LeftButton)
                                                        : event.button() == Qt::LeftButton;
  if (!isLeft || isMadeOfTouch(event) || isSentAgain(window, event)) return;
  const auto state = event.type() == QEvent::MouseButtonPress ? QEventPoint::Pressed
                     : event.type() == QEvent::MouseMove      ? QEventPoint::Updated
                                                              : QEventPoint::Released;
  std::vector<WindowTouch> fingers = std::exchange(fingers_, {});
  fingers.assign({{kMouseFinger, state, event.position(), {}}});
  route(window, std::move(fingers), true);
}

void TouchRouter::cancel(QWindow& window, std::optional<std::int64_t> panel) {
  forViewsOf(window, [panel](TouchedView& view, QPointF /*offset*/) { view.cancel(panel); });
}

void TouchRouter::route(QWindow& window, std::vector<WindowTouch> fingers, bool ofMouse) {
  QPointF moved;
  forViewsOf(window, [&](TouchedView& view, QPointF offset) {
    if (ofMouse && !view.isMouseFinger()) return;
    for (WindowTouch& one : fingers) one.place += offset - moved;
    moved = offset;
    view.take(fingers);
  });
  fingers_ = std::move(fingers);
}

template <class Call>
void TouchRouter::forViewsOf(QWindow& window, Call call) {
  bool hasEnded = false;
  QPointF offset;
  ++depth_;
  for (std::size_t i = 0; i < views_.size(); ++i) {  // a recognizer of the host's may add one
    const auto view = views_[i].lock();
    hasEnded = hasEnded || !view;
    if (view && isIn(window, view->window(), offset)) call(*view, offset);
  }
  if (--depth_ > 0 || !hasEnded) return;
  std::erase_if(views_, [](const auto& watched) { return watched.expired(); });
  if (views_.empty()) parent()->removeEventFilter(this);
}

}  // namespace quorvance::qt
