#include "biometrics/motion_sampling.h"

#include <chrono>
#include <cmath>
#include <utility>

#include "base/collection.h"
#include "base/debug.h"
#include "base/forked_child.h"
#include "base/out_of_memory.h"

namespace quorvance {
namespace {

// Asks for the fastest rate that the sensor has.
constexpr std::chrono::milliseconds kUpdateInterval{1};

// One reading that is no number would make a body that cannot be JSON of the whole screen.
bool isReading(const std::optional<MotionSample>& sample) {
  return sample && std::isfinite(sample->x) && std::isfinite(sample->y) && std::isfinite(sample->z);
}

}  // namespace

MotionSampling::MotionSampling(std::shared_ptr<MotionSource> source,
                               std::shared_ptr<InnerQuorvanceData> state,
                               std::shared_ptr<ScreenRecording> recording)
    : source_(std::move(source)),
      manager_(source_ ? source_->makeManager() : nullptr),
      state_(std::move(state)),
      recording_(std::move(recording)) {}

MotionSampling::~MotionSampling() {
  if (isStarted_ && !isForkedChild()) stopAll();
}

void MotionSampling::start() {
  if (!manager_ || !isCollectionEnabled()) return;
  auto latest = std::make_shared<LatestMotion>();
  auto queue = source_->currentQueue();
  if (queue) carryOut({std::move(queue), std::move(latest)});
}

void MotionSampling::stop() {
  if (manager_) carryOut({});
}

void MotionSampling::carryOut(Order order) {
  std::unique_lock lock(mutex_);
  orders_.push_back(std::move(order));
  if (std::exchange(isBeingDriven_, true)) return;
  while (!orders_.empty()) {
    Order next = std::move(orders_.front());
    orders_.pop_front();
    lock.unlock();
    hasMemoryFor([&] { drive(std::move(next)); });
    lock.lock();
  }
  isBeingDriven_ = false;
}

// Takes the order over, so that what it holds goes before the lock is taken again.
void MotionSampling::drive(Order order) { order.queue ? startAll(order) : stopAll(); }

// The accelerometer makes the rows and comes last, so that the first row may find the others'
// values.
void MotionSampling::startAll(const Order& order) {
  isStarted_ = true;
  startOne(MotionSensor::deviceMotion, SensorType::chb_gra, order);
  startOne(MotionSensor::gyroscope, SensorType::chb_gyr_unc, order);
  if (isInDebugMode()) startOne(MotionSensor::magnetometer, SensorType::mag, order);
  startOne(MotionSensor::accelerometer, SensorType::chb_lin_acc, order);
}

void MotionSampling::startOne(MotionSensor sensor, SensorType type, const Order& order) {
  if (!manager_->isAvailable(sensor)) return;
  manager_->setUpdateInterval(sensor, kUpdateInterval);
  manager_->startUpdates(sensor, order.queue, handlerFor(sensor, type, order.latest));
}

void MotionSampling::stopAll() {
  isStarted_ = false;
  for (const MotionSensor sensor : {MotionSensor::accelerometer, MotionSensor::deviceMotion,
                                    MotionSensor::gyroscope, MotionSensor::magnetometer}) {
    if (manager_->isAvailable(sensor)) manager_->stopUpdates(sensor);
  }
}

// A sensor that still runs when the host switches collection off is stopped by its own sample.
MotionHandler MotionSampling::handlerFor(MotionSensor sensor, SensorType type,
                                         std::shared_ptr<LatestMotion> latest) const {
  return [weak = std::weak_ptr(recording_), sensors = std::weak_ptr(manager_), state = state_,
          latest = std::move(latest), sensor, type](const std::optional<MotionSample>& sample) {
    if (!isCollectionEnabled()) {
      if (const auto running = sensors.lock()) running->stopUpdates(sensor);
      return;
    }
    const auto recording = weak.lock();
    if (!recording || !isReading(sample)) return;
    const SensorEvent event =
        type == SensorType::chb_lin_acc
            ? recording->addMotion(*latest, state->now(), *sample, isInDebugMode())
            : recording->addSample(*latest, type, *sample);
    if (isInDebugMode()) debugPrint(event.text());
  };
}

}  // namespace quorvance
