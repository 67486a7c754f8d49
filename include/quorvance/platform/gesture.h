#pragma once

#include "quorvance/standard_library.h"

#include <functional>
#include <memory>
#include <vector>

#pragma GCC visibility push(default)

namespace quorvance {

/// The states of a pan gesture; the numbers are those that the touch rules were written with.
enum class GestureState {
  possible = 0,
  began = 1,
  changed = 2,
  ended = 3,
  cancelled = 4,
  failed = 5,
};

/// One finger on the glass. A value that is not finite counts as 0.
struct Touch {
  /// Pressure as the panel tells it, 1 being an average touch; 0 where it tells none.
  double force = 0;
  /// Half of the contact ellipse's longer axis, in points.
  double majorRadius = 0;
};

/// In points, in the coordinates of the view that the recognizer was added to.
struct GesturePoint {
  double x = 0;
  double y = 0;
};

/// The recognizer that a screen listener adds to the root view of a screen. The host's toolkit
/// adapter drives it on the host's main thread, for each event of the toolkit in this order: the
/// touches that began, moved or ended, then the new state with the place of the gesture. It never
/// takes a touch away from the view and never keeps another gesture of the host's from being
/// recognized.
///
/// A finger put down is `began`, each move `changed`, the last finger lifted `ended`; a touch that
/// the system takes over is `cancelled`. Host's main thread only.
class QuorvanceGestureRecognizer {
 public:
  /// Told of every new state; see setState.
  using Action = std::function<void(QuorvanceGestureRecognizer& recognizer)>;

  explicit QuorvanceGestureRecognizer(Action action);
  virtual ~QuorvanceGestureRecognizer();
  QuorvanceGestureRecognizer(const QuorvanceGestureRecognizer&) = delete;
  QuorvanceGestureRecognizer& operator=(const QuorvanceGestureRecognizer&) = delete;

  /// All touches of the event, the first one first; of an empty set force and radius are 0.
  void touchesBegan(const std::vector<Touch>& touches) { update(touches); }
  void touchesMoved(const std::vector<Touch>& touches) { update(touches); }
  void touchesEnded(const std::vector<Touch>& touches) { update(touches); }

  /// Takes the state and the place over and tells the listener, also when nothing has changed. A
  /// place that is not finite leaves the last one.
  void setState(GestureState state, GesturePoint location);

  GestureState state() const { return state_; }
  GesturePoint location() const { return location_; }
  /// Of the first touch of the last event.
  double force() const { return force_; }
  double majorRadius() const { return majorRadius_; }
  /// The largest so far.
  double maxForce() const { return maxForce_; }
  double maxMajorRadius() const { return maxMajorRadius_; }

  /// Whether touches are withheld from the view while the gesture is recognized: never.
  static constexpr bool kCancelsTouchesInView = false;
  /// Whether other recognizers may recognize at the same time: always.
  static constexpr bool kRecognizesSimultaneously = true;

 private:
  void update(const std::vector<Touch>& touches);

  const Action action_;
  GestureState state_ = GestureState::possible;
  GesturePoint location_;
  double maxMajorRadius_ = 0;
  double maxForce_ = 0;
  double force_ = 0;
  double majorRadius_ = 0;
};

}  // namespace quorvance

#pragma GCC visibility pop
