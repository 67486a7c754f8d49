#include "platform/testing/fake_motion.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quorvance {

/// Of one listener.
class FakeMotion::Manager : public MotionManager {
 public:
  explicit Manager(std::shared_ptr<FakeMotion> source) : source_(std::move(source)) {}
  ~Manager() override { source_->forget(this, std::nullopt); }
  Manager(const Manager&) = delete;
  Manager& operator=(const Manager&) = delete;

  bool isAvailable(MotionSensor sensor) override { return !source_->missing.contains(sensor); }

  void setUpdateInterval(MotionSensor sensor, std::chrono::microseconds interval) override {
    const std::lock_guard lock(source_->mutex_);
    source_->intervals_[sensor] = interval;
  }

  void startUpdates(MotionSensor sensor, std::shared_ptr<MainQueue> /*queue*/,
                    MotionHandler handler) override {
    source_->forget(this, sensor);
    source_->note("start ", sensor);
    const std::lock_guard lock(source_->mutex_);
    source_->started_.push_back({this, sensor, std::move(handler)});
  }

  void stopUpdates(MotionSensor sensor) override {
    source_->note("stop ", sensor);
    source_->forget(this, sensor);
  }

 private:
  const std::shared_ptr<FakeMotion> source_;
};

std::shared_ptr<MotionManager> FakeMotion::makeManager() {
  return std::make_shared<Manager>(shared_from_this());
}

std::vector<MotionHandler> FakeMotion::handlersOf(MotionSensor sensor) const {
  std::vector<MotionHandler> handlers;
  const std::lock_guard lock(mutex_);
  for (const Started& started : started_) {
    if (started.sensor == sensor) handlers.push_back(started.handler);
  }
  return handlers;
}

void FakeMotion::deliver(MotionSensor sensor, std::optional<MotionSample> sample) {
  queue_->post([this, sensor, sample] { deliverHere(sensor, sample); });
}

void FakeMotion::deliverHere(MotionSensor sensor, std::optional<MotionSample> sample) {
  for (const MotionHandler& handler : handlersOf(sensor)) handler(sample);
}

bool FakeMotion::isRunning(MotionSensor sensor) const { return !handlersOf(sensor).empty(); }

std::chrono::microseconds FakeMotion::interval(MotionSensor sensor) const {
  const std::lock_guard lock(mutex_);
  const auto found = intervals_.find(sensor);
  return found == intervals_.end() ? std::chrono::microseconds(0) : found->second;
}

void FakeMotion::note(const char* what, MotionSensor sensor) {
  constexpr std::array<const char*, 4> kNames = {"accelerometer", "gravity", "gyroscope",
                                                 "magnetometer"};
  const std::lock_guard lock(mutex_);
  if (calls) calls->push_back(std::string(what) + kNames[static_cast<std::size_t>(sensor)]);
}

void FakeMotion::forget(const void* manager, std::optional<MotionSensor> sensor) {
  std::vector<Started> gone;
  const std::lock_guard lock(mutex_);
  const auto kept =
      std::stable_partition(started_.begin(), started_.end(), [&](const Started& started) {
        return started.manager != manager || (sensor && started.sensor != *sensor);
      });
  gone.assign(std::make_move_iterator(kept), std::make_move_iterator(started_.end()));
  started_.erase(kept, started_.end());
}

}  // namespace quorvance
