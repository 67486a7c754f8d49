#pragma once

// Behavioural biometrics: what a user's fingers and the device's motion tell on a screen.

#include <cstdint>
#include <memory>

#include "quorvance/platform/view.h"
#include "quorvance/screen_listener.h"
#include "quorvance/screen_listener_type.h"

namespace quorvance {

/// Makes screen listeners for the manager.
class ScreenListenerMaker {
 public:
  virtual ~ScreenListenerMaker() = default;
  /// Never null.
  virtual std::shared_ptr<QuorvanceScreenListener> makeListener(ScreenListenerType type,
                                                                std::int64_t actionId,
                                                                std::shared_ptr<View> view) = 0;
  /// Starts the motion sensors and looks whether they move: an emulator's do not. Main queue only.
  virtual void probeSensors() = 0;
};

/// Its listeners capture nothing.
class InertScreenListenerMaker : public ScreenListenerMaker {
 public:
  std::shared_ptr<QuorvanceScreenListener> makeListener(ScreenListenerType type,
                                                        std::int64_t actionId,
                                                        std::shared_ptr<View> view) override;
  void probeSensors() override;
};

}  // namespace quorvance
