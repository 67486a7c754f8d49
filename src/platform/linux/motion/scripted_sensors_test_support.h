#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <optional>

#include "platform/linux/motion/sensor_reader.h"

namespace quorvance {

/// Sensors without hardware: each reading is the count of its sensor's calls, in x. A sensor that
/// hangs keeps the thread that asks it, as the kernel does, until the test mends it. Any thread.
class ScriptedSensors : public SensorFinder, public std::enable_shared_from_this<ScriptedSensors> {
 public:
  /// Longer than anything that a test waits for; only a failing test waits so long.
  static constexpr std::chrono::seconds kLongest{30};

  /// `gone` is kept when nobody has the sensors any more: no thread and no sampler.
  explicit ScriptedSensors(std::promise<void> gone) : gone_(std::move(gone)) {}
  ~ScriptedSensors() override { gone_.set_value(); }

  std::shared_ptr<SensorReader> find(SensorKind kind) override {
    call(kind);
    const std::lock_guard lock(mutex_);
    if (of(kind).isMissing) return nullptr;
    return std::make_shared<Reader>(shared_from_this(), kind);
  }

  void setHanging(SensorKind kind, bool isHanging) {
    const std::lock_guard lock(mutex_);
    of(kind).isHanging = isHanging;
    changed_.notify_all();
  }
  void setMissing(SensorKind kind, bool isMissing) {
    const std::lock_guard lock(mutex_);
    of(kind).isMissing = isMissing;
  }
  int calls(SensorKind kind) {
    const std::lock_guard lock(mutex_);
    return of(kind).calls;
  }
  /// Waits until the sensor has been called so often.
  bool waitForCalls(SensorKind kind, int count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kLongest, [&] { return of(kind).calls >= count; });
  }
  /// Waits until a thread is caught in the sensor that hangs.
  bool waitForHang(SensorKind kind) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kLongest,
                             [&] { return of(kind).isHanging && of(kind).isInCall; });
  }
  /// Whether two threads were in one sensor at a time.
  bool wasShared() {
    const std::lock_guard lock(mutex_);
    return wasShared_;
  }

 private:
  struct Sensor {
    bool isHanging = false;
    bool isMissing = false;
    bool isInCall = false;
    int calls = 0;
  };

  class Reader : public SensorReader {
   public:
    Reader(std::shared_ptr<ScriptedSensors> sensors, SensorKind kind)
        : sensors_(std::move(sensors)), kind_(kind) {}
    std::optional<MotionSample> read() override {
      return MotionSample{static_cast<double>(sensors_->call(kind_)), 0, 0};
    }
    std::chrono::microseconds shortestInterval() const override {
      return std::chrono::milliseconds(1);
    }

   private:
    const std::shared_ptr<ScriptedSensors> sensors_;
    const SensorKind kind_;
  };

  Sensor& of(SensorKind kind) { return sensors_[static_cast<std::size_t>(kind)]; }

  /// Which call of the sensor it is.
  int call(SensorKind kind) {
    std::unique_lock lock(mutex_);
    Sensor& sensor = of(kind);
    wasShared_ = wasShared_ || sensor.isInCall;
    sensor.isInCall = true;
    const int number = ++sensor.calls;
    changed_.notify_all();
    changed_.wait(lock, [&] { return !sensor.isHanging; });
    sensor.isInCall = false;
    return number;
  }

  std::promise<void> gone_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::array<Sensor, kSensorKinds> sensors_;
  bool wasShared_ = false;
};

}  // namespace quorvance
