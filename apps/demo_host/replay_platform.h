// What a host's toolkit and sensors would be: a view that is touched by a recording, motion sensors
// that a recording moves, and a clock that can tell recorded times. All through the public seam.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "apps/demo_host/recorded_screen.h"
#include "quorvance/platform/clock.h"
#include "quorvance/platform/motion.h"
#include "quorvance/platform/view.h"

namespace demo_host {

// The root view of a recorded screen, or one of its subviews. One thread.
class ReplayView : public quorvance::View {
 public:
  explicit ReplayView(const RecordedView& view);

  quorvance::ViewFrame frame() override { return frame_; }
  std::int64_t tag() override { return tag_; }
  void setTag(std::int64_t tag) override { tag_ = tag; }
  std::vector<std::shared_ptr<quorvance::View>> subviews() override { return subviews_; }
  std::string description() override;
  void addGestureRecognizer(
      std::shared_ptr<quorvance::QuorvanceGestureRecognizer> recognizer) override;

  // Somebody watches the touches.
  bool isWatched() const { return !recognizers_.empty(); }
  // Hands one event of the toolkit to every recognizer: the touches, then the state.
  void touch(const RecordedTouch& event) const;

 private:
  quorvance::ViewFrame frame_;
  std::int64_t tag_;
  std::vector<std::shared_ptr<quorvance::View>> subviews_;
  std::vector<std::shared_ptr<quorvance::QuorvanceGestureRecognizer>> recognizers_;
};

// Has every sensor; they move when a recording says so. Any thread.
class ReplayMotion : public quorvance::MotionSource,
                     public std::enable_shared_from_this<ReplayMotion> {
 public:
  // Samples are delivered on the queue.
  explicit ReplayMotion(std::shared_ptr<quorvance::MainQueue> queue);

  std::shared_ptr<quorvance::MotionManager> makeManager() override;
  std::shared_ptr<quorvance::MainQueue> currentQueue() override { return queue_; }

  // Delivers to everybody who has started the sensor and does not stop it first.
  void deliver(const RecordedMotion& motion);
  // Returns once everything that was delivered so far has been taken; false when it takes too long.
  bool waitUntilTaken() const;

 private:
  class Manager;
  struct Updates;

  // Ends what the manager has started; without a sensor, all of it.
  void end(const void* manager, std::optional<quorvance::MotionSensor> sensor);

  const std::shared_ptr<quorvance::MainQueue> queue_;
  std::mutex mutex_;
  std::vector<std::shared_ptr<Updates>> updates_;
};

// The system's clock, which a replay may set forward: after it the clock goes on from where it was
// set to, so that it never goes back. Any thread.
class ReplayClock : public quorvance::WallClock {
 public:
  double secondsSince1970() override;

  std::int64_t nowMilliseconds();
  // Stands still at this time from now on.
  void stopAt(std::int64_t milliseconds);
  // Goes on.
  void goOn();

 private:
  std::int64_t nowLocked() const;

  std::mutex mutex_;
  std::optional<std::int64_t> stoppedAt_;
  // How far ahead of the system's clock.
  std::int64_t ahead_ = 0;
};

}  // namespace demo_host
