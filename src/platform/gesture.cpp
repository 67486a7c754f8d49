#include "quorvance/platform/gesture.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quorvance {
namespace {

double finiteOrZero(double value) { return std::isfinite(value) ? value : 0.0; }

}  // namespace

QuorvanceGestureRecognizer::QuorvanceGestureRecognizer(Action action)
    : action_(std::move(action)) {}

QuorvanceGestureRecognizer::~QuorvanceGestureRecognizer() = default;

void QuorvanceGestureRecognizer::setState(GestureState state, GesturePoint location) {
  state_ = state;
  if (std::isfinite(location.x) && std::isfinite(location.y)) location_ = location;
  if (action_) action_(*this);
}

void QuorvanceGestureRecognizer::update(const std::vector<Touch>& touches) {
  const Touch first = touches.empty() ? Touch() : touches.front();
  force_ = finiteOrZero(first.force);
  maxForce_ = std::max(maxForce_, force_);
  majorRadius_ = finiteOrZero(first.majorRadius);
  maxMajorRadius_ = std::max(maxMajorRadius_, majorRadius_);
}

}  // namespace quorvance
