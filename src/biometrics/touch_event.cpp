#include "biometrics/touch_event.h"

#include "base/text.h"

namespace quorvance {

std::string QuorvanceViewTouchEvent::text() const {
  return "[" + std::to_string(motEveTime) + "," + textOf(touchX) + "," + textOf(touchY) + "," +
         textOf(currSize) + "," + textOf(currPressure) + "," + std::to_string(view_id) + "," +
         std::to_string(id) + "]";
}

QuorvanceViewTouchEvent makeTouchEvent(const TouchRow& row, std::int64_t time,
                                       std::int64_t viewId) {
  return {.currSize = row.size,
          .currPressure = row.pressure,
          .touchX = row.x,
          .touchY = row.y,
          .motEveTime = time,
          .view_id = viewId,
          .id = static_cast<std::int64_t>(row.action)};
}

}  // namespace quorvance
