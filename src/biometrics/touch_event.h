#pragma once

#include <cstdint>
#include <string>

namespace quorvance {

/// What a finger did, as the rows tell it.
enum class TouchAction : std::int64_t { up = -1, move = 0, down = 1 };

/// One touch sample as it is sent, in points; kept for every sample, also outside of all views.
struct TouchRow {
  double x = 0;
  double y = 0;
  /// The touch's major radius.
  double size = 0;
  double pressure = 0;
  TouchAction action = TouchAction::move;
};

/// One touch sample on a view (the members are spelled as the interface is).
struct QuorvanceViewTouchEvent {
  static constexpr std::int64_t ACTION_DEFAULT = 0;
  static constexpr std::int64_t ACTION_DOWN = 1;
  static constexpr std::int64_t ACTION_UP = -1;

  double currSize = 0;
  double currPressure = 0;
  /// In the coordinates of the screen's root view.
  double touchX = 0;
  double touchY = 0;
  /// Milliseconds since 1970.
  std::int64_t motEveTime = 0;
  /// The tag of the view under the finger.
  std::int64_t view_id = 0;
  std::int64_t id = ACTION_DEFAULT;

  /// "[time,x,y,size,pressure,view,action]"
  std::string text() const;
};

QuorvanceViewTouchEvent makeTouchEvent(const TouchRow& row, std::int64_t time, std::int64_t viewId);

}  // namespace quorvance
