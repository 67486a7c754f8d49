#include "apps/demo_host/replay_platform.h"

#include <atomic>
#include <chrono>
#include <future>
#include <utility>

namespace demo_host {
namespace {

using quorvance::MotionHandler;
using quorvance::MotionSensor;

constexpr std::chrono::seconds kDeliveryTime{10};

std::int64_t systemMilliseconds() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

}  // namespace

ReplayView::ReplayView(const RecordedView& view) : frame_(view.frame), tag_(view.tag) {
  for (const RecordedView& subview : view.subviews) {
    subviews_.push_back(std::make_shared<ReplayView>(subview));
  }
}

std::string ReplayView::description() { return "<ReplayView; tag " + std::to_string(tag_) + ">"; }

void ReplayView::addGestureRecognizer(
    std::shared_ptr<quorvance::QuorvanceGestureRecognizer> recognizer) {
  recognizers_.push_back(std::move(recognizer));
}

void ReplayView::touch(const RecordedTouch& event) const {
  using quorvance::GestureState;
  for (const auto& recognizer : recognizers_) {
    if (event.state == GestureState::began) recognizer->touchesBegan({event.touch});
    if (event.state == GestureState::changed) recognizer->touchesMoved({event.touch});
    if (event.state == GestureState::ended) recognizer->touchesEnded({event.touch});
    recognizer->setState(event.state, event.place);
  }
}

// One start of one sensor.
struct ReplayMotion::Updates {
  Updates(const void* startedBy, MotionSensor startedSensor,
          std::shared_ptr<quorvance::MainQueue> deliveryQueue, MotionHandler sampleHandler)
      : manager(startedBy),
        sensor(startedSensor),
        queue(std::move(deliveryQueue)),
        handler(std::move(sampleHandler)) {}

  const void* const manager;
  const MotionSensor sensor;
  const std::shared_ptr<quorvance::MainQueue> queue;
  const MotionHandler handler;
  std::atomic<bool> isOver{false};
};

class ReplayMotion::Manager : public quorvance::MotionManager {
 public:
  explicit Manager(std::shared_ptr<ReplayMotion> source) : source_(std::move(source)) {}
  ~Manager() override { source_->end(this, std::nullopt); }
  Manager(const Manager&) = delete;
  Manager& operator=(const Manager&) = delete;

  bool isAvailable(MotionSensor) override { return true; }
  // A recording has its own rate.
  void setUpdateInterval(MotionSensor, std::chrono::microseconds) override {}
  void startUpdates(MotionSensor sensor, std::shared_ptr<quorvance::MainQueue> queue,
                    MotionHandler handler) override {
    source_->end(this, sensor);
    auto updates = std::make_shared<Updates>(this, sensor, std::move(queue), std::move(handler));
    const std::lock_guard lock(source_->mutex_);
    source_->updates_.push_back(std::move(updates));
  }
  void stopUpdates(MotionSensor sensor) override { source_->end(this, sensor); }

 private:
  const std::shared_ptr<ReplayMotion> source_;
};

ReplayMotion::ReplayMotion(std::shared_ptr<quorvance::MainQueue> queue)
    : queue_(std::move(queue)) {}

std::shared_ptr<quorvance::MotionManager> ReplayMotion::makeManager() {
  return std::make_shared<Manager>(shared_from_this());
}

// A handler may hold what asks this source again when it goes, so nothing goes under the lock.
void ReplayMotion::end(const void* manager, std::optional<MotionSensor> sensor) {
  std::vector<std::shared_ptr<Updates>> ended;
  const std::lock_guard lock(mutex_);
  std::erase_if(updates_, [&](const std::shared_ptr<Updates>& updates) {
    if (updates->manager != manager || (sensor && updates->sensor != *sensor)) return false;
    updates->isOver = true;
    ended.push_back(updates);
    return true;
  });
}

void ReplayMotion::deliver(const RecordedMotion& motion) {
  const std::lock_guard lock(mutex_);
  for (const auto& updates : updates_) {
    if (updates->sensor != motion.sensor) continue;
    updates->queue->post([updates, sample = motion.sample] {
      if (!updates->isOver) updates->handler(sample);
    });
  }
}

bool ReplayMotion::waitUntilTaken() const {
  auto taken = std::make_shared<std::promise<void>>();
  auto future = taken->get_future();
  queue_->post([taken] { taken->set_value(); });
  return future.wait_for(kDeliveryTime) == std::future_status::ready;
}

double ReplayClock::secondsSince1970() { return static_cast<double>(nowMilliseconds()) / 1000.0; }

std::int64_t ReplayClock::nowMilliseconds() {
  const std::lock_guard lock(mutex_);
  return nowLocked();
}

std::int64_t ReplayClock::nowLocked() const {
  return stoppedAt_ ? *stoppedAt_ : systemMilliseconds() + ahead_;
}

void ReplayClock::stopAt(std::int64_t milliseconds) {
  const std::lock_guard lock(mutex_);
  stoppedAt_ = milliseconds;
}

void ReplayClock::goOn() {
  const std::lock_guard lock(mutex_);
  ahead_ = nowLocked() - systemMilliseconds();
  stoppedAt_.reset();
}

}  // namespace demo_host
