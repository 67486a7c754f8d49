#pragma once

#pragma GCC visibility push(default)

namespace quorvance {

/// Watches one screen from its creation until it is finished. Made by
/// QuorvanceManager::startNewScreenListener; the host's main thread only.
class QuorvanceScreenListener {
 public:
  virtual ~QuorvanceScreenListener() = default;
  /// Starts motion sampling.
  virtual void resumeListen() = 0;
  /// Stops motion sampling and keeps a snapshot of what was captured.
  virtual void pauseListenToSensors() = 0;
  /// Ends the screen.
  virtual void finishScreenListener() = 0;
};

}  // namespace quorvance

#pragma GCC visibility pop
