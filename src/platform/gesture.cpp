#include "quorvance/platform/gesture.h"

#include <algorithm>
#include <utility>

namespace quorvance {

QuorvanceGestureRecognizer::QuorvanceGestureRecognizer(Action action)
    : action_(std::move(action)) {}

QuorvanceGestureRecognizer::~QuorvanceGestureRecognizer() = default;

void QuorvanceGestureRecognizer::setState(GestureState state, GesturePoint location) {
  state_ = state;
  location_ = location;
  if (action_) action_(*this);
}

void QuorvanceGestureRecognizer::update(const std::vector<Touch>& touches) {
  const Touch first = touches.empty() ? Touch() : touches.front();
  force_ = first.force;
  maxForce_ = std::max(maxForce_, force_);
  majorRadius_ = first.majorRadius;
  maxMajorRadius_ = std::max(maxMajorRadius_, majorRadius_);
}

}  // namespace quorvance
