#include <QAccelerometer>
#include <QGyroscope>
#include <QMagnetometer>
#include <QSensorBackend>
#include <map>
#include <thread>

#include "test/qt/qt_world_test_support.h"

namespace quorvance::qt {
namespace {

using testing::DoubleNear;
using testing::Pointwise;

/// A sensor that a test moves.
template <class Reading>
class FakeSensor : public QSensorBackend {
 public:
  explicit FakeSensor(QSensor* sensor) : QSensorBackend(sensor) {
    setReading<Reading>(&reading_);
    addDataRate(1, 100);
    addDataRate(200, 400);
  }
  ~FakeSensor() override { std::erase(running, this); }
  void start() override { running.push_back(this); }
  void stop() override { std::erase(running, this); }
  bool isFeatureSupported(QSensor::Feature feature) const override {
    return feature == QSensor::AccelerationMode;
  }
  void tell(double x, double y, double z) {
    reading_.setX(x);
    reading_.setY(y);
    reading_.setZ(z);
    newReadingAvailable();
  }

  static inline std::vector<FakeSensor*> running;

 private:
  Reading reading_{this};
};

template <class Sensor, class Reading>
class Registered : public QSensorBackendFactory {
 public:
  Registered() { QSensorManager::registerBackend(Sensor::sensorType, "fake", this); }
  ~Registered() override { QSensorManager::unregisterBackend(Sensor::sensorType, "fake"); }
  QSensorBackend* createBackend(QSensor* sensor) override {
    return new FakeSensor<Reading>(sensor);
  }
};

using Acceleration = FakeSensor<QAccelerometerReading>;
using Rotation = FakeSensor<QGyroscopeReading>;
using Field = FakeSensor<QMagnetometerReading>;

struct QtMotionTest : testing::Test {
  ~QtMotionTest() override {
    QCoreApplication::processEvents();
    EXPECT_TRUE(Acceleration::running.empty()) << "the manager has ended";
  }
  void start(MotionManager& manager, MotionSensor sensor) {
    manager.setUpdateInterval(sensor, std::chrono::microseconds(1000));
    manager.startUpdates(sensor, time, [this, sensor](const std::optional<MotionSample>& sample) {
      samples[sensor] = {sample->x, sample->y, sample->z};
      ++count;
    });
    QCoreApplication::processEvents();
  }
  void expectSample(MotionSensor sensor, const std::vector<double>& expected) {
    time->run();
    EXPECT_THAT(samples[sensor], Pointwise(DoubleNear(1e-6), expected));
  }

  std::shared_ptr<ManualExecutor> time = std::make_shared<ManualExecutor>();
  std::map<MotionSensor, std::vector<double>> samples;
  int count = 0;
};

TEST_F(QtMotionTest, ReadingsBecomeTheSeamsUnitsAndSigns) {
  const Registered<QAccelerometer, QAccelerometerReading> accelerometer;
  const Registered<QGyroscope, QGyroscopeReading> gyroscope;
  const Registered<QMagnetometer, QMagnetometerReading> magnetometer;
  const auto source = makeMotionSource(time);
  ASSERT_TRUE(source);
  const auto manager = source->makeManager();
  start(*manager, MotionSensor::accelerometer);
  Acceleration::running.back()->tell(9.80665, 0, 9.80665);
  expectSample(MotionSensor::accelerometer, {-1, 0, -1});
  EXPECT_EQ(Acceleration::running.back()->sensor()->dataRate(), 400) << "the fastest there is";
  start(*manager, MotionSensor::deviceMotion);
  auto& gravity = *Acceleration::running.back();
  EXPECT_EQ(static_cast<QAccelerometer*>(gravity.sensor())->accelerationMode(),
            QAccelerometer::Gravity);
  gravity.tell(0, -4.903325, 0);
  expectSample(MotionSensor::deviceMotion, {0, 0.5, 0});
  start(*manager, MotionSensor::gyroscope);
  Rotation::running.back()->tell(180, -90, 0);
  expectSample(MotionSensor::gyroscope, {3.14159265, -1.57079633, 0});
  start(*manager, MotionSensor::magnetometer);
  Field::running.back()->tell(0.00004, 0, -0.00002);
  expectSample(MotionSensor::magnetometer, {40, 0, -20});
  Field::running.back()->tell(NAN, 0, 0);
  time->run();
  EXPECT_EQ(count, 4) << "a value that is not finite is no sample";
}

TEST_F(QtMotionTest, NothingComesAfterAStopOnWhateverThread) {
  const Registered<QAccelerometer, QAccelerometerReading> accelerometer;
  auto manager = makeMotionSource(time)->makeManager();
  EXPECT_FALSE(manager->isAvailable(MotionSensor::gyroscope));
  start(*manager, MotionSensor::gyroscope);
  start(*manager, MotionSensor::accelerometer);
  Acceleration::running.back()->tell(1, 1, 1);
  std::thread([&] { manager->stopUpdates(MotionSensor::accelerometer); }).join();
  Acceleration::running.back()->tell(2, 2, 2);  // the thread of the sensor has not heard of it
  time->run();
  EXPECT_EQ(count, 0);
  QCoreApplication::processEvents();
  EXPECT_TRUE(Acceleration::running.empty());
  start(*manager, MotionSensor::accelerometer);
  start(*manager, MotionSensor::accelerometer);
  EXPECT_EQ(Acceleration::running.size(), 1U);
  std::thread([&] { manager.reset(); }).join();
  QCoreApplication::processEvents();
  EXPECT_TRUE(Acceleration::running.empty());
}

TEST_F(QtMotionTest, WithoutAnIntervalASensorKeepsItsOwnRate) {
  const Registered<QAccelerometer, QAccelerometerReading> accelerometer;
  const auto manager = makeMotionSource(time)->makeManager();
  const auto rateOfStarted = [&] {
    manager->startUpdates(MotionSensor::accelerometer, time, [](const auto&) {});
    QCoreApplication::processEvents();
    return Acceleration::running.back()->sensor()->dataRate();
  };
  EXPECT_EQ(rateOfStarted(), 0);
  manager->setUpdateInterval(MotionSensor::accelerometer, std::chrono::hours(1));
  EXPECT_EQ(rateOfStarted(), 1) << "the slowest there is";
}

TEST_F(QtMotionTest, ThereIsNoneWithoutAnAccelerometerAndOnOtherThreads) {
  EXPECT_EQ(makeMotionSource(time), nullptr);
  const Registered<QAccelerometer, QAccelerometerReading> accelerometer;
  std::shared_ptr<MotionSource> elsewhere = makeMotionSource(time);
  EXPECT_NE(elsewhere, nullptr);
  std::thread([&] { elsewhere = makeMotionSource(time); }).join();
  EXPECT_EQ(elsewhere, nullptr);
}

}  // namespace
}  // namespace quorvance::qt
