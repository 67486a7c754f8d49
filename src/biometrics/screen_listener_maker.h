#pragma once

// Behavioural biometrics: what a user's fingers and the device's motion tell on a screen. A
// listener's touches are in capturing_screen_listener.h, the rest of it in screen_capture.h; start
// reading there.

#include <cstdint>
#include <memory>

#include "biometrics/screen_capture.h"
#include "quorvance/platform/view.h"
#include "quorvance/screen_listener.h"
#include "quorvance/screen_listener_type.h"

namespace quorvance {

/// Looks whether the motion sensors move: an emulator's do not. A plain listener, which samples
/// from its making until it is stopped. Main queue only.
class SensorProbe {
 public:
  explicit SensorProbe(std::shared_ptr<const ScreenServices> services);
  /// Stops the sensors; whether a row came of them.
  bool stop();

 private:
  ScreenCapture capture_;
};

/// Makes screen listeners for the manager. Immutable.
class ScreenListenerMaker {
 public:
  explicit ScreenListenerMaker(ScreenServices services);
  /// Host's main thread only; never null.
  std::shared_ptr<QuorvanceScreenListener> makeListener(ScreenListenerType type,
                                                        std::int64_t actionId,
                                                        std::shared_ptr<View> view,
                                                        std::shared_ptr<ScreenListenerOwner> owner);
  /// Never null.
  std::shared_ptr<SensorProbe> startProbe();

 private:
  const std::shared_ptr<const ScreenServices> services_;
};

/// A listener that captures nothing, for processes in which the library does nothing.
std::shared_ptr<QuorvanceScreenListener> makeInertListener();

}  // namespace quorvance
