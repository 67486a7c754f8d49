#pragma once

#include <QEventPoint>
#include <QPointF>
#include <cstdint>
#include <memory>
#include <vector>

#include "quorvance/platform/gesture.h"
#include "quorvance/qt/qt_view.h"

class QWindow;

namespace quorvance::qt {

/// One finger of an event, in the coordinates of the window that the event was sent to.
struct WindowTouch {
  /// Tells it from other fingers, also from those of other panels.
  std::uint64_t finger = 0;
  QEventPoint::State state = QEventPoint::Unknown;
  QPointF place;
  Touch touch;
};

/// A view that follows the fingers that were put down on it and drives its recognizers.
/// Application's thread only.
class TouchedView : public View, public std::enable_shared_from_this<TouchedView> {
 public:
  explicit TouchedView(ViewOptions options) : options_(options) {}

  bool isMouseFinger() const { return options_.mouseIsFinger; }
  /// Null when it is gone or in none.
  virtual QWindow* window() const = 0;

  /// Takes all fingers of one event of its window.
  void take(const std::vector<WindowTouch>& fingers);
  /// Tells, when fingers are down, that the touch is cancelled.
  void cancel();

 protected:
  /// Whether a finger that is put down there is on the view or on what is in it.
  virtual bool isHitAt(QPointF inWindow) const = 0;
  virtual GesturePoint placeOf(QPointF inWindow) const = 0;
  void addRecognizer(std::shared_ptr<QuorvanceGestureRecognizer> recognizer);

 private:
  void takeNewFingers(const std::vector<WindowTouch>& fingers);
  void tell(GestureState state, bool hasBegun, bool hasEnded);

  const ViewOptions options_;
  std::vector<std::shared_ptr<QuorvanceGestureRecognizer>> recognizers_;
  /// Those that are down, in the order in which they were put down.
  std::vector<std::uint64_t> down_;
  /// Of the event, in that order; kept for its room.
  std::vector<Touch> touches_;
  GesturePoint place_;
};

}  // namespace quorvance::qt
