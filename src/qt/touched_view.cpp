#include "qt/touched_view.h"

#include <algorithm>
#include <utility>

namespace quorvance::qt {

void TouchedView::addRecognizer(std::shared_ptr<QuorvanceGestureRecognizer> recognizer) {
  if (recognizer) recognizers_.push_back(std::move(recognizer));
}

template <class Call>
void TouchedView::forRecognizers(Call call) {
  for (std::size_t i = 0; i < recognizers_.size(); ++i) {  // one of the host's may add another
    const auto recognizer = recognizers_[i];
    call(*recognizer);
  }
}

void TouchedView::take(const std::vector<WindowTouch>& fingers) {
  const std::size_t wereDown = down_.size();
  takeNewFingers(fingers);
  const bool hasBegun = down_.size() > wereDown;
  const WindowTouch* first = nullptr;
  bool hasChanged = false;
  touches_.clear();
  std::erase_if(down_, [&](const Finger& finger) {
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

void TouchedView::cancel(std::optional<std::int64_t> panel) {
  const auto isMeant = [&](const Finger& finger) { return !panel || finger.panel == *panel; };
  if (std::ranges::none_of(down_, isMeant)) return;
  down_.clear();
  forRecognizers([&](auto& recognizer) { recognizer.setState(GestureState::cancelled, place_); });
}

void TouchedView::tell(GestureState state, bool hasBegun, bool hasEnded) {
  forRecognizers([&](auto& recognizer) {
    if (hasBegun) {
      recognizer.touchesBegan(touches_);
    } else if (hasEnded) {
      recognizer.touchesEnded(touches_);
    } else {
      recognizer.touchesMoved(touches_);
    }
    recognizer.setState(state, place_);
  });
}

}  // namespace quorvance::qt
