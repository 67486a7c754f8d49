#include "biometrics/capturing_screen_listener.h"

#include <utility>

#include "base/collection.h"
#include "base/debug.h"
#include "base/fatal.h"
#include "base/forked_child.h"
#include "base/out_of_memory.h"
#include "base/text.h"
#include "biometrics/view_lookup.h"

// Every operation that a host may call goes through enter().

namespace quorvance {
namespace {

/// Does nothing in a fork of the host's process; nothing is thrown.
template <class Operation>
void enter(Operation operation) noexcept {
  if (!isForkedChild()) hasMemoryFor(operation);
}

std::string coordinatesText(const QuorvanceGestureRecognizer& recognizer) {
  const GesturePoint place = recognizer.location();
  return "coordinates: x = " + textOf(place.x) + ", y = " + textOf(place.y) +
         ", force = " + textOf(recognizer.force()) +
         ", majorRadius = " + textOf(recognizer.majorRadius());
}

}  // namespace

CapturingScreenListener::CapturingScreenListener(std::shared_ptr<const ScreenServices> services,
                                                 std::shared_ptr<ScreenCapture> capture,
                                                 std::shared_ptr<View> view)
    : services_(std::move(services)), capture_(std::move(capture)), view_(std::move(view)) {}

std::shared_ptr<CapturingScreenListener> CapturingScreenListener::make(
    std::shared_ptr<const ScreenServices> services, std::shared_ptr<ScreenListenerOwner> owner,
    ScreenListenerType type, std::int64_t actionId, std::shared_ptr<View> view) {
  auto capture = std::make_shared<ScreenCapture>(services, owner, type, actionId);
  std::shared_ptr<CapturingScreenListener> listener(
      new CapturingScreenListener(services, std::move(capture), std::move(view)));
  // A listener that cannot do one of these still does the rest.
  hasMemoryFor([&] { listener->capture_->sendScreenEvent("START"); });
  hasMemoryFor([&] {
    if (listener->view_ && services->state->sdkConfig()->enableBioCollection.value_or(false)) {
      watch(*listener->view_, listener);
    }
  });
  hasMemoryFor([&] { services->faceVerification->runFor(std::move(owner)); });
  return listener;
}

void CapturingScreenListener::watch(View& view,
                                    const std::shared_ptr<CapturingScreenListener>& listener) {
  tagSubviews(view);
  view.addGestureRecognizer(std::make_shared<QuorvanceGestureRecognizer>(
      [weak = std::weak_ptr(listener)](const QuorvanceGestureRecognizer& recognizer) {
        if (const auto alive = weak.lock()) alive->handleTouches(recognizer);
      }));
}

void CapturingScreenListener::resumeListen() {
  enter([&] { capture_->resumeListen(); });
}

void CapturingScreenListener::pauseListenToSensors() {
  enter([&] { capture_->pauseListenToSensors(); });
}

void CapturingScreenListener::finishScreenListener() {
  enter([&] { capture_->finishScreenListener(); });
}

void CapturingScreenListener::handleTouches(const QuorvanceGestureRecognizer& recognizer) {
  enter([&] { takeTouches(recognizer); });
}

// The bound is checked here alone; what comes of the sensors meanwhile is kept.
void CapturingScreenListener::takeTouches(const QuorvanceGestureRecognizer& recognizer) {
  if (!isCollectionEnabled()) return capture_->stopSensors();
  const ScreenRecording::Counts counts = recording().counts();
  if (isInDebugMode()) {
    debugPrint("data sensors and touchs " + std::to_string(counts.touchLines) + "   " +
               std::to_string(counts.motionLines));
  }
  if (counts.isFull()) {
    capture_->stopSensors();
    return;
  }
  if (isInDebugMode()) debugPrint(coordinatesText(recognizer));
  const GesturePoint place = recognizer.location();
  handleState(recognizer.state(), {.x = place.x,
                                   .y = place.y,
                                   .size = recognizer.majorRadius(),
                                   .pressure = recognizer.force()});
}

void CapturingScreenListener::handleState(GestureState state, TouchRow row) {
  switch (state) {
    case GestureState::possible:
      debugPrint("possiblePanPress");
      break;
    case GestureState::began:
      began(row);
      break;
    case GestureState::changed:
      changed(row);
      break;
    case GestureState::ended:
      ended(row);
      break;
    case GestureState::cancelled:
      debugPrint("cancelled_handleLongPress");
      capture_->pauseListenToSensors();
      break;
    case GestureState::failed:
      debugPrint("failed_handleLongPress");
      break;
  }
}

// The press and its first sample have two readings of the clock.
void CapturingScreenListener::began(TouchRow row) {
  capture_->resumeListen();
  recording().setCurrentPressId(services_->state->now());
  row.action = TouchAction::down;
  const auto event = record(row, takeTouchTime());
  if (!event || !isInDebugMode()) return;
  debugPrint(event->text());
  debugPrint("beganPanPress");
}

void CapturingScreenListener::changed(TouchRow row) {
  row.action = TouchAction::move;
  const auto event = record(row, takeTouchTime());
  if (!event || !isInDebugMode()) return;
  debugPrint(event->text());
  debugPrint("changedPanPress");
}

void CapturingScreenListener::ended(TouchRow row) {
  debugPrint("endedPanPress");
  row.action = TouchAction::up;
  record(row, takeTouchTime());
  capture_->pauseListenToSensors();
  recording().emptyCurrentTouch();
}

std::int64_t CapturingScreenListener::takeTouchTime() {
  const std::int64_t now = services_->state->now();
  recording().setCurrentTouchId(now);
  return now;
}

std::optional<QuorvanceViewTouchEvent> CapturingScreenListener::record(const TouchRow& row,
                                                                       std::int64_t time) {
  recording().addTouch(row);
  if (!view_) fatalError("a touch came for a screen listener without a view");
  const auto viewId = viewIdAt(*view_, {row.x, row.y});
  if (!viewId) return std::nullopt;
  const QuorvanceViewTouchEvent event = makeTouchEvent(row, time, *viewId);
  recording().addTouchEvent(event);
  return event;
}

}  // namespace quorvance
