#pragma once

#include <QEventPoint>
#include <QPointF>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "quorvance/platform/gesture.h"
#include "quorvance/qt/qt_view.h"

class QWindow;

namespace quorvance::qt {

/// What tells a finger from others: two panels may give the same number.
struct Finger {
  std::int64_t panel = 0;
  int number = 0;
  bool operator==(const Finger&) const = default;
};

/// One finger of an event, in the coordinates of the window that the event was sent to.
struct WindowTouch {
  Finger finger;
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
  /// Tells, when fingers are down, that the touch is cancelled; with a panel, when one of its is.
  void cancel(std::optional<std::int64_t> panel = std::nullopt);

 protected:
  /// Whether a finger that is put down there is on the view or on what is in it.
  virtual bool isHitAt(QPointF inWindow) const = 0;
  virtual GesturePoint placeOf(QPointF inWindow) const = 0;
  void addRecognizer(std::shared_ptr<QuorvanceGestureRecognizer> recognizer);

 private:
  /// Cancels when a finger that is down is put down: it has been lifted unseen.
  void cancelPressedAgain(const std::vector<WindowTouch>& fingers);
  /// Leaves the touches of those that are or were down.
  void follow(const std::vector<WindowTouch>& fingers, std::vector<Touch>& touches);
  void takeNewFingers(const std::vector<WindowTouch>& fingers);
  template <class Call>
  void forRecognizers(Call call);
  void tell(GestureState state, bool hasBegun, const std::vector<Touch>& touches);

  const ViewOptions options_;
  std::vector<std::shared_ptr<QuorvanceGestureRecognizer>> recognizers_;
  /// Those that are down, in the order in which they were put down.
  std::vector<Finger> down_;
  /// Of the event before, in that order; kept for its room.
  std::vector<Touch> touches_;
  GesturePoint place_;
};

}  // namespace quorvance::qt
