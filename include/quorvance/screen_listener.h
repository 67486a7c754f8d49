#pragma once

#include "quorvance/platform/gesture.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// Watches one screen from its creation until it is finished. Made by
/// QuorvanceManager::startNewScreenListener, on the host's main thread; the others may be called
/// from any thread, and every call returns without waiting for a sensor, a disk or a network.
///
/// While the configuration asks for biometrics, the listener gives the direct subviews of the
/// screen's root view that have no tag one, from 59000, and adds a recognizer of its own to that
/// view (View::addGestureRecognizer). The recognizer calls handleTouches for as long as the
/// listener lives: every touch is recorded, and the motion sensors are sampled while a finger is
/// down. What was recorded is sent once, when the screen is finished; touches after that are
/// recorded and start the sensors again.
class QuorvanceScreenListener {
 public:
  virtual ~QuorvanceScreenListener() = default;
  /// Starts motion sampling; starts it anew while it runs.
  virtual void resumeListen() = 0;
  /// Stops motion sampling and keeps a snapshot of what was captured.
  virtual void pauseListenToSensors() = 0;
  /// Ends the screen: what was captured is sent from the main queue. A second call sends all of it
  /// again.
  virtual void finishScreenListener() = 0;
  /// Takes the recognizer's new state, its place and its first touch. Called by the recognizer; the
  /// host's main thread only, since it looks at the views. A touch that began, moved or ended on a
  /// listener without a view ends the process.
  virtual void handleTouches(const QuorvanceGestureRecognizer& recognizer) = 0;
};

}  // namespace quorvance

#pragma GCC visibility pop
