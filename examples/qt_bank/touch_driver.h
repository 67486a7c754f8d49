// A finger that the window system would tell of, for journeys without a user.
#pragma once

#include <QObject>
#include <QPoint>
#include <QString>
#include <memory>

class QPointingDevice;
class QQuickItem;
class QQuickWindow;
class QWidget;
class QWindow;

namespace qt_bank {

// Its touches take the whole way of real ones: through the window system's interface to the window.
// GUI thread, with the windows on the screen.
class TouchDriver : public QObject {
 public:
  TouchDriver();
  ~TouchDriver() override;

  // The middle of the visible item of that objectName; false when there is none in the window.
  bool tap(QQuickWindow& window, const QString& name);
  bool tap(QWidget& window, const QString& name);
  // Puts a finger down, moves it in steps, lifts it. Points of the window.
  void drag(QWindow& window, QPoint from, QPoint to);

 private:
  void tapAt(QWindow& window, QPoint place);

  const std::unique_ptr<QPointingDevice> device_;
};

// Null when no visible item under the window's content has the name.
QQuickItem* findVisible(QQuickWindow& window, const QString& name);

}  // namespace qt_bank
