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
  cancelPressedAgain(fingers);
  // Taken out for the call: a recognizer may run an event loop, whose events come here too.
  std::vector<Touch> touches = std::exchange(touches_, {});
  touches.clear();
  follow(fingers, touches);
  touches_ = std::move(touches);
}

void TouchedView::cancelPressedAgain(const std::vector<WindowTouch>& fingers) {
  const auto isDown = [this](const WindowTouch& one) {
    return one.state == QEventPoint::Pressed && std::ranges::find(down_, one.finger) != down_.end();
  };
  if (std::ranges::any_of(fingers, isDown)) cancel();
}

void TouchedView::follow(const std::vector<WindowTouch>& fingers, std::vector<Touch>& touches) {
  const std::size_t wereDown = down_.size();
  takeNewFingers(fingers);
  const bool hasBegun = down_.size() > wereDown;
  const WindowTouch* first = nullptr;
  bool hasChanged = false;
  std::erase_if(down_, [&](const Finger& finger) {
    const auto known = std::find_if(fingers.begin(), fingers.end(),
                                    [&](const WindowTouch& one) { return one.finger == finger; });
    if (known == fingers.end()) return false;
    if (first == nullptr) first = &*known;
    touches.push_back(known->touch);
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
       hasBegun, touches);
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
  const GesturePoint place = place_;
  forRecognizers([&](auto& recognizer) { recognizer.setState(GestureState::cancelled, place); });
}

void TouchedView::tell(GestureState state, bool hasBegun, const std::vector<Touch>& touches) {
  const GesturePoint place = place_;
  const bool hasEnded = touches.size() > down_.size();
  forRecognizers([&](auto& recognizer) {
    if (hasBegun) {
      recognizer.touchesBegan(touches);
    } else if (hasEnded) {
      recognizer.touchesEnded(touches);
    } else {
      recognizer.touchesMoved(touches);
    }
    recognizer.setState(state, place);
  });
}

}  // namespace quorvance::qt
