#pragma once

// A manager over doubles in an application of Qt's, and a touch panel as the window system has one.

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QPointingDevice>
#include <QWindow>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>
// In this order: the header names types of the ones above.
#include <private/qhighdpiscaling_p.h>
#include <qpa/qwindowsysteminterface.h>

#include "platform/testing/fake_motion.h"
#include "platform/testing/test_world.h"
#include "quorvance/qt/qt.h"

namespace quorvance::qt {

/// x, y, size, pressure, action.
using Row = std::vector<double>;

/// A manager whose server wants touches.
struct QtWorld : TestWorld {
  QtWorld() {
    http->answer("getSdkConfiguration/", okReply(R"({"enable_bio_collection": true})"));
    Platform seam = platform();
    seam.motion = motion;
    manager = std::make_shared<QuorvanceManager>(std::move(seam));
    manager->setupWithServerUrl("http://risk.test/", "u1");
    time->run();
  }

  /// The bodies of the screens that have ended, in order.
  std::vector<Json> screens() const {
    time->run();
    std::vector<Json> bodies;
    for (const SentRequest& sent : http->sentTo("BiometricData/")) {
      bodies.push_back(sent.body.at("bio_sensor_event_data"));
    }
    return bodies;
  }
  /// The touch rows of the last screen that has ended.
  std::vector<Row> rows() const {
    const auto bodies = screens();
    return bodies.empty() ? std::vector<Row>()
                          : bodies.back().at("eventList").get<std::vector<Row>>();
  }
  /// The tags of the views that were touched on it.
  std::vector<std::int64_t> tags() const {
    std::vector<std::int64_t> found;
    const auto bodies = screens();
    if (bodies.empty()) return found;
    for (const Json& row : bodies.back().at("eventListTS")) {
      found.push_back(row.at(1).get<std::int64_t>());
    }
    return found;
  }

  std::shared_ptr<FakeMotion> motion = std::make_shared<FakeMotion>(time);
  std::shared_ptr<QuorvanceManager> manager;
};

/// A finger as the panel tells it, in the window's coordinates.
struct PanelFinger {
  int id;
  QEventPoint::State state;
  QPointF place;
  double pressure = 0.5;
  QSizeF diameters = {12, 8};
};

/// A panel as the window system knows it.
class TouchPanel {
 public:
  explicit TouchPanel(bool hasPressure = true)
      : device_(new QPointingDevice(
            "panel", nextId(), QInputDevice::DeviceType::TouchScreen,
            QPointingDevice::PointerType::Finger,
            QInputDevice::Capability::Position | QInputDevice::Capability::Area |
                (hasPressure ? QInputDevice::Capability::Pressure : QInputDevice::Capability::None),
            10, 0, QString(), QPointingDeviceUniqueId(), QCoreApplication::instance())) {
    QWindowSystemInterface::registerInputDevice(device_);
  }

  /// One event with all fingers that are on the glass.
  void touch(QWindow& window, const std::vector<PanelFinger>& fingers) const {
    QList<QWindowSystemInterface::TouchPoint> points;
    for (const PanelFinger& finger : fingers) {
      QWindowSystemInterface::TouchPoint point;
      point.id = finger.id;
      point.state = finger.state;
      point.pressure = finger.pressure;
      QRectF area(QPointF(), finger.diameters);
      area.moveCenter(window.mapToGlobal(finger.place));
      point.area = QHighDpi::toNativePixels(area, &window);
      points.append(point);
    }
    QWindowSystemInterface::handleTouchEvent(&window, device_, points);
    QCoreApplication::processEvents();
  }
  void press(QWindow& window, QPointF place) const { touch(window, {{0, kPressed, place}}); }
  void move(QWindow& window, QPointF place) const { touch(window, {{0, kMoved, place}}); }
  void lift(QWindow& window, QPointF place) const { touch(window, {{0, kLifted, place}}); }
  /// Down, on and up at one place.
  void tap(QWindow& window, QPointF place) const {
    press(window, place);
    lift(window, place);
  }
  void cancel(QWindow& window) const {
    QWindowSystemInterface::handleTouchCancelEvent(&window, device_);
    QCoreApplication::processEvents();
  }

  static constexpr auto kPressed = QEventPoint::Pressed;
  static constexpr auto kMoved = QEventPoint::Updated;
  static constexpr auto kStill = QEventPoint::Stationary;
  static constexpr auto kLifted = QEventPoint::Released;

 private:
  static qint64 nextId() {
    static qint64 last = 100;
    return ++last;
  }

  QPointingDevice* const device_;  // the application's
};

/// The left button, as the window system tells of it.
inline void sendMouse(QWindow& window, QEvent::Type type, QPointF place) {
  const bool isDown = type != QEvent::MouseButtonRelease;
  QWindowSystemInterface::handleMouseEvent(
      &window, QHighDpi::toNativeLocalPosition(place, &window),
      QHighDpi::toNativePixels(window.mapToGlobal(place), &window),
      isDown ? Qt::LeftButton : Qt::NoButton,
      type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, type);
  QCoreApplication::processEvents();
}

inline constexpr double kDown = 1;
inline constexpr double kMove = 0;
inline constexpr double kUp = -1;

/// The row of a finger of PanelFinger's pressure and size. Of one that is lifted Qt tells no
/// pressure.
inline Row rowAt(double x, double y, double action) {
  return {x, y, 6, action == kUp ? 0 : 0.5, action};
}

}  // namespace quorvance::qt
