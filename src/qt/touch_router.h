#pragma once

#include <QObject>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "qt/touched_view.h"

class QMouseEvent;
class QPointerEvent;
class QTouchEvent;

namespace quorvance::qt {

/// Shows the touches of all windows to the views that are watched, before the application handles
/// them: an event filter on the application object, which looks only at what is sent to a window
/// and lets every event pass. It is there while a view is watched; owned by the application object.
class TouchRouter : public QObject {
 public:
  /// Application's thread only.
  static void watch(const std::shared_ptr<TouchedView>& view);

  bool eventFilter(QObject* receiver, QEvent* event) override;

 private:
  using QObject::QObject;

  void touch(QWindow& window, const QTouchEvent& event);
  void mouse(QWindow& window, const QMouseEvent& event);
  void cancel(QWindow& window, std::optional<std::int64_t> panel);
  /// Whether it is a press that the window was sent before: an item that holds one back sends it to
  /// its window once more, with its time. What followed is of no finger that is down any more.
  bool isSentAgain(const QWindow& window, const QPointerEvent& event);
  /// Gives the fingers to the views of the window. Keeps their room.
  void route(QWindow& window, std::vector<WindowTouch> fingers, bool ofMouse);
  template <class Call>
  void forViewsOf(QWindow& window, Call call);

  std::vector<std::weak_ptr<TouchedView>> views_;
  /// Of the event before; kept for its room, which is taken out for a call: a recognizer may run an
  /// event loop, whose events come here too.
  std::vector<WindowTouch> fingers_;
  /// How many of such calls are under way; meanwhile views are only added.
  int depth_ = 0;
  /// The time of the last one in a window of the system's, and in one inside of a widget, in
  /// milliseconds.
  std::uint64_t lastPress_ = 0;
  std::uint64_t lastInnerPress_ = 0;
};

}  // namespace quorvance::qt
