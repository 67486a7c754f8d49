#include "c_interface/host_motion.h"

#include <cmath>
#include <optional>
#include <utility>

#include "base/forked_child.h"
#include "base/out_of_memory.h"

namespace quorvance {

/// One sensor started by one manager. What is still to be delivered holds it weakly: once it is
/// stopped, nothing more arrives.
struct HostMotionSource::Update {
  const MotionManager* owner;
  MotionSensor sensor;
  std::shared_ptr<MainQueue> queue;
  MotionHandler handler;
};

/// What is started now.
class HostMotionSource::Updates {
 public:
  void start(std::shared_ptr<const Update> update) {
    const std::lock_guard lock(mutex_);
    started_.push_back(std::move(update));
  }

  /// Handlers are dropped outside of the lock.
  void stop(const MotionManager* owner, std::optional<MotionSensor> sensor) noexcept {
    for (;;) {
      std::shared_ptr<const Update> dropped;
      const std::lock_guard lock(mutex_);
      for (auto& update : started_) {
        if (update->owner != owner || (sensor && update->sensor != *sensor)) continue;
        dropped = std::move(update);
        update = std::move(started_.back());
        started_.pop_back();
        break;
      }
      if (!dropped) return;
    }
  }

  void deliver(MotionSensor sensor, const MotionSample& sample) {
    for (const auto& update : startedFor(sensor)) {
      update->queue->post([awaited = std::weak_ptr(update), sample] {
        if (const auto current = awaited.lock()) current->handler(sample);
      });
    }
  }

 private:
  std::vector<std::shared_ptr<const Update>> startedFor(MotionSensor sensor) {
    std::vector<std::shared_ptr<const Update>> found;
    const std::lock_guard lock(mutex_);
    for (const auto& update : started_) {
      if (update->sensor == sensor) found.push_back(update);
    }
    return found;
  }

  std::mutex mutex_;
  std::vector<std::shared_ptr<const Update>> started_;
};

class HostMotionSource::Manager : public MotionManager {
 public:
  explicit Manager(std::shared_ptr<Updates> updates) : updates_(std::move(updates)) {}
  ~Manager() override {
    if (!leakInForkedChild(updates_)) updates_->stop(this, std::nullopt);
  }
  Manager(const Manager&) = delete;
  Manager& operator=(const Manager&) = delete;

  bool isAvailable(MotionSensor /*sensor*/) override { return true; }
  void setUpdateInterval(MotionSensor /*sensor*/, std::chrono::microseconds /*interval*/) override {
  }
  void startUpdates(MotionSensor sensor, std::shared_ptr<MainQueue> queue,
                    MotionHandler handler) override {
    if (isForkedChild() || !queue || !handler) return;
    updates_->stop(this, sensor);
    hasMemoryFor([&] {
      updates_->start(std::make_shared<const Update>(
          Update{this, sensor, std::move(queue), std::move(handler)}));
    });
  }
  void stopUpdates(MotionSensor sensor) override {
    if (!isForkedChild()) updates_->stop(this, sensor);
  }

 private:
  const std::shared_ptr<Updates> updates_;
};

namespace {

struct InstalledSource {
  std::mutex mutex;
  std::weak_ptr<HostMotionSource> source;
};

// Leaked on purpose, as the context that uses the source.
InstalledSource& installedSource() {
  static auto* const installed = new InstalledSource();
  return *installed;
}

bool isFinite(const MotionSample& sample) {
  return std::isfinite(sample.x) && std::isfinite(sample.y) && std::isfinite(sample.z);
}

}  // namespace

HostMotionSource::HostMotionSource(std::shared_ptr<MainQueue> queue)
    : queue_(std::move(queue)), updates_(std::make_shared<Updates>()) {}

HostMotionSource::~HostMotionSource() { leakInForkedChild(updates_); }

void HostMotionSource::install(const std::shared_ptr<HostMotionSource>& source) {
  InstalledSource& installed = installedSource();
  const std::lock_guard lock(installed.mutex);
  installed.source = source;
}

bool HostMotionSource::deliver(MotionSensor sensor, const MotionSample& sample) {
  InstalledSource& installed = installedSource();
  std::unique_lock lock(installed.mutex);
  const auto source = installed.source.lock();
  lock.unlock();
  if (source && isFinite(sample)) source->updates_->deliver(sensor, sample);
  return source != nullptr;
}

std::shared_ptr<MotionManager> HostMotionSource::makeManager() {
  watchForForks();
  return std::make_shared<Manager>(updates_);
}

}  // namespace quorvance
