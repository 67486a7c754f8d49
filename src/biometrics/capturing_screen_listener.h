#pragma once

#include <cstdint>
#include <memory>

#include "biometrics/screen_capture.h"
#include "quorvance/platform/gesture.h"
#include "quorvance/platform/view.h"
#include "quorvance/screen_listener.h"

namespace quorvance {

/// The listener of a screen as the host holds it: the host's views, and the rules of its touches,
/// over a ScreenCapture.
///
/// Its life: made with "START", tags, a recognizer and the chance of face verification; then, touch
/// by touch, a press starts the sensors and its end stops them; finished with "END" and the upload.
/// Once the text lines exceed their bound, each touch only stops the sensors.
class CapturingScreenListener : public QuorvanceScreenListener {
 public:
  static std::shared_ptr<CapturingScreenListener> make(
      std::shared_ptr<const ScreenServices> services, std::shared_ptr<ScreenListenerOwner> owner,
      ScreenListenerType type, std::int64_t actionId, std::shared_ptr<View> view);

  void resumeListen() override;
  void pauseListenToSensors() override;
  void finishScreenListener() override;
  void handleTouches(const QuorvanceGestureRecognizer& recognizer) override;

  ScreenRecording& recording() { return capture_->recording(); }

 private:
  CapturingScreenListener(std::shared_ptr<const ScreenServices> services,
                          std::shared_ptr<ScreenCapture> capture, std::shared_ptr<View> view);

  /// Tags the subviews and adds the recognizer, which holds the listener weakly.
  static void watch(View& view, const std::shared_ptr<CapturingScreenListener>& listener);
  void takeTouches(const QuorvanceGestureRecognizer& recognizer);
  void handleState(GestureState state, TouchRow row);
  void began(TouchRow row);
  void changed(TouchRow row);
  void ended(TouchRow row);
  /// The event of the sample; absent when there is no view under it, and then only its touch row
  /// is kept.
  std::optional<QuorvanceViewTouchEvent> record(const TouchRow& row, std::int64_t time);
  std::int64_t takeTouchTime();

  const std::shared_ptr<const ScreenServices> services_;
  const std::shared_ptr<ScreenCapture> capture_;
  const std::shared_ptr<View> view_;
};

}  // namespace quorvance
