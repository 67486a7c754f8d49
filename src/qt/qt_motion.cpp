#include "quorvance/qt/qt_motion.h"

#include <QAccelerometer>
#include <QGyroscope>
#include <QMagnetometer>
#include <QPointer>
#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>
#include <numbers>
#include <utility>

#include "qt/application_thread.h"
#include "quorvance/qt/event_loop_queue.h"

namespace quorvance::qt {
namespace {

constexpr std::size_t kSensors = 4;
constexpr double kStandardGravity = 9.80665;
constexpr double kRadiansOfDegree = std::numbers::pi / 180;
constexpr double kMicroteslaOfTesla = 1e6;

std::size_t indexOf(MotionSensor sensor) { return static_cast<std::size_t>(sensor); }

/// Qt counts what holds the device against gravity, the seam the other way.
double factorOf(MotionSensor sensor) {
  switch (sensor) {
    case MotionSensor::accelerometer:
    case MotionSensor::deviceMotion:
      return -1 / kStandardGravity;
    case MotionSensor::gyroscope:
      return kRadiansOfDegree;
    case MotionSensor::magnetometer:
      return kMicroteslaOfTesla;
  }
  return 0;
}

template <class Sensor>
MotionSample readingOf(const QSensor& sensor) {
  const auto* const reading = static_cast<const Sensor&>(sensor).reading();
  if (reading == nullptr) return {NAN, NAN, NAN};
  return {reading->x(), reading->y(), reading->z()};
}

/// Not finite without a reading.
MotionSample sampleOf(MotionSensor sensor, const QSensor& of) {
  const MotionSample read = sensor == MotionSensor::gyroscope      ? readingOf<QGyroscope>(of)
                            : sensor == MotionSensor::magnetometer ? readingOf<QMagnetometer>(of)
                                                                   : readingOf<QAccelerometer>(of);
  const double factor = factorOf(sensor);
  return {read.x * factor, read.y * factor, read.z * factor};
}

bool isFinite(const MotionSample& sample) {
  return std::isfinite(sample.x) && std::isfinite(sample.y) && std::isfinite(sample.z);
}

/// The backend that Qt prefers; empty where there is none. Qt brings some that make their readings
/// up.
QByteArray backendFor(const QByteArray& type) {
  const auto isReal = [](const QByteArray& backend) { return !backend.startsWith("dummy."); };
  QByteArray preferred = QSensor::defaultSensorForType(type);
  if (isReal(preferred)) return preferred;
  const QList<QByteArray> all = QSensor::sensorsForType(type);
  const auto real = std::find_if(all.begin(), all.end(), isReal);
  return real == all.end() ? QByteArray() : *real;
}

/// Null where Qt has none of it.
std::unique_ptr<QSensor> makeSensor(MotionSensor sensor) {
  std::unique_ptr<QSensor> made;
  if (sensor == MotionSensor::gyroscope) {
    made = std::make_unique<QGyroscope>();
  } else if (sensor == MotionSensor::magnetometer) {
    made = std::make_unique<QMagnetometer>();
  } else {
    made = std::make_unique<QAccelerometer>();
  }
  made->setIdentifier(backendFor(made->type()));
  if (made->identifier().isEmpty() || !made->connectToBackend()) return nullptr;
  if (sensor == MotionSensor::deviceMotion) {
    if (!made->isFeatureSupported(QSensor::AccelerationMode)) return nullptr;
    static_cast<QAccelerometer&>(*made).setAccelerationMode(QAccelerometer::Gravity);
  }
  return made;
}

/// 0 without an interval.
int rateOf(std::chrono::microseconds interval) {
  if (interval.count() <= 0) return 0;
  return static_cast<int>(std::max(1.0, 1 / std::chrono::duration<double>(interval).count()));
}

/// The rate that the sensor has which comes closest; without a choice, and for 0, its own.
void setRate(QSensor& sensor, int perSecond) {
  if (perSecond == 0) return;
  int closest = 0;
  for (const auto& [slowest, fastest] : sensor.availableDataRates()) {
    const int possible = std::clamp(perSecond, slowest, std::max(slowest, fastest));
    if (std::abs(possible - perSecond) < std::abs(closest - perSecond)) closest = possible;
  }
  if (closest > 0) sensor.setDataRate(closest);
}

/// One sensor started by one manager. What is still to be delivered holds it weakly: once it is
/// stopped, nothing more arrives.
struct SensorUpdate {
  MotionSensor sensor;
  int perSecond;
  std::shared_ptr<MainQueue> queue;
  MotionHandler handler;
};

void deliver(const std::shared_ptr<SensorUpdate>& update, const QSensor& sensor) {
  const MotionSample sample = sampleOf(update->sensor, sensor);
  if (!isFinite(sample)) return;
  update->queue->post([awaited = std::weak_ptr(update), sample] {
    if (const auto current = awaited.lock()) current->handler(sample);
  });
}

/// The sensors of one manager, on the application's thread; owned by the application object.
class RunningSensors : public QObject {
 public:
  using QObject::QObject;

  void start(const std::weak_ptr<SensorUpdate>& awaited) {
    const auto update = awaited.lock();
    if (!update) return;
    auto& running = sensors_.at(indexOf(update->sensor));
    running = makeSensor(update->sensor);
    if (!running) return;
    setRate(*running, update->perSecond);
    connect(running.get(), &QSensor::readingChanged, this, [sensor = running.get(), awaited] {
      if (const auto current = awaited.lock()) deliver(current, *sensor);
    });
    running->start();
  }
  void stop(MotionSensor sensor) { sensors_.at(indexOf(sensor)).reset(); }

 private:
  std::array<std::unique_ptr<QSensor>, kSensors> sensors_;
};

using AvailableSensors = std::array<bool, kSensors>;

/// Any thread: what concerns the sensors is done on the application's, in the order of the calls.
class SensorManager : public MotionManager {
 public:
  SensorManager(AvailableSensors available, std::shared_ptr<EventLoopQueue> application)
      : available_(available), application_(std::move(application)) {}
  ~SensorManager() override {
    // With the queue, which may otherwise end first and drop this.
    application_->post([running = running_, queue = application_] { delete running->data(); });
  }
  SensorManager(const SensorManager&) = delete;
  SensorManager& operator=(const SensorManager&) = delete;

  bool isAvailable(MotionSensor sensor) override { return available_.at(indexOf(sensor)); }

  void setUpdateInterval(MotionSensor sensor, std::chrono::microseconds interval) override {
    const std::lock_guard lock(mutex_);
    intervals_.at(indexOf(sensor)) = std::max(interval, std::chrono::microseconds(1));
  }

  void startUpdates(MotionSensor sensor, std::shared_ptr<MainQueue> queue,
                    MotionHandler handler) override {
    if (!queue || !handler || !isAvailable(sensor)) return;
    auto update = std::make_shared<SensorUpdate>(
        SensorUpdate{sensor, 0, std::move(queue), std::move(handler)});
    exchange(sensor, update);
    application_->post([running = running_, awaited = std::weak_ptr(update)] {
      if (!*running) *running = new RunningSensors(QCoreApplication::instance());
      (*running)->start(awaited);
    });
  }

  void stopUpdates(MotionSensor sensor) override {
    if (!exchange(sensor, nullptr)) return;
    application_->post([running = running_, sensor] {
      if (*running) (*running)->stop(sensor);
    });
  }

 private:
  /// The one before, which is to be dropped without the lock.
  std::shared_ptr<SensorUpdate> exchange(MotionSensor sensor,
                                         std::shared_ptr<SensorUpdate> update) {
    const std::lock_guard lock(mutex_);
    if (update) update->perSecond = rateOf(intervals_.at(indexOf(sensor)));
    return std::exchange(updates_.at(indexOf(sensor)), std::move(update));
  }

  const AvailableSensors available_;
  const std::shared_ptr<EventLoopQueue> application_;
  /// Looked into on the application's thread alone.
  const std::shared_ptr<QPointer<RunningSensors>> running_ =
      std::make_shared<QPointer<RunningSensors>>();
  std::mutex mutex_;
  std::array<std::shared_ptr<SensorUpdate>, kSensors> updates_;
  /// 0 until it is set.
  std::array<std::chrono::microseconds, kSensors> intervals_{};
};

class SensorSource : public MotionSource {
 public:
  SensorSource(AvailableSensors available, std::shared_ptr<MainQueue> queue)
      : available_(available), queue_(std::move(queue)) {}

  std::shared_ptr<MotionManager> makeManager() override {
    return std::make_shared<SensorManager>(available_, application_);
  }
  std::shared_ptr<MainQueue> currentQueue() override { return queue_; }

 private:
  const AvailableSensors available_;
  const std::shared_ptr<MainQueue> queue_;
  const std::shared_ptr<EventLoopQueue> application_ = std::make_shared<EventLoopQueue>();
};

}  // namespace

std::shared_ptr<MotionSource> makeMotionSource(std::shared_ptr<MainQueue> queue) {
  if (!isOnApplicationThread()) return nullptr;
  AvailableSensors available;
  for (std::size_t i = 0; i < kSensors; ++i) {
    available.at(i) = makeSensor(static_cast<MotionSensor>(i)) != nullptr;
  }
  if (!available.at(indexOf(MotionSensor::accelerometer))) return nullptr;
  return std::make_shared<SensorSource>(available, std::move(queue));
}

}  // namespace quorvance::qt
