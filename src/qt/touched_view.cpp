#include "qt/touched_view.h"

#include <algorithm>
#include <utility>

namespace quorvance::qt {

void TouchedView::addRecognizer(std::shared_ptr<QuorvanceGestureRecognizer> recognizer) {
  if (recognizer) recognizers_.push_back(std::move(recognizer));
}

void TouchedView::take(const std::vector<WindowTouch>& fingers) {
  const std::size_t wereDown = down_.size();
  takeNewFingers(fingers);
  const bool hasBegun = down_.size() > wereDown;
  const WindowTouch* first = nullptr;
  bool hasChanged = false;
  touches_.clear();
  std::erase_if(down_, [&](std::uint64_t finger) {
    const auto known = std::find_if(fingers.begin(), fingers.end(),
                                    [&](const WindowTouch& one) { return one.finger == finger; });
    if (known == fingers.end()) return false;
    if (first == nullptr) first = &*known;
    touches_.push_back(known->touch);
    hasChanged = hasChanged || known->state != QEventPoint::Stationary;
    return known->state == QEventPoint::Released;
  });
  if (!hasChanged) return;
  place_ = placeOf(first->place);
  const bool isFirst = wereDown == 0;
  const bool isLast = down_.empty();
  tell(isFirst  ? GestureState::began
       : isLast ? GestureState::ended
                : GestureState::changed,
       hasBegun, touches_.size() > down_.size());
}

void TouchedView::takeNewFingers(const std::vector<WindowTouch>& fingers) {
  for (const WindowTouch& one : fingers) {
    if (one.state == QEventPoint::Pressed && isHitAt(one.place)) down_.push_back(one.finger);
  }
}

void TouchedView::cancel() {
  if (down_.empty()) return;
  down_.clear();
  for (const auto& recognizer : recognizers_) {
    recognizer->setState(GestureState::cancelled, place_);
  }
}

void TouchedView::tell(GestureState state, bool hasBegun, bool hasEnded) {
  for (const auto& recognizer : recognizers_) {
    if (hasBegun) {
      recognizer->touchesBegan(touches_);
    } else if (hasEnded) {
      recognizer->touchesEnded(touches_);
    } else {
      recognizer->touchesMoved(touches_);
    }
    recognizer->setState(state, place_);
  }
}

}  // namespace quorvance::qt
