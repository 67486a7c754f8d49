#include "platform/linux/motion/linux_motion_source.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <future>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/linux/motion/scripted_sensors_test_support.h"
#include "platform/linux/threads/thread_main_queue.h"
#include "platform/testing/forked_child_test_support.h"
#include "platform/testing/manual_executor.h"

namespace quorvance {
namespace {

constexpr auto kLongest = ScriptedSensors::kLongest;

/// What handlers receive, from whatever thread; a late one finds it still there.
class Inbox {
 public:
  MotionHandler handler() {
    return [state = state_](const std::optional<MotionSample>& sample) {
      const std::lock_guard lock(state->mutex);
      state->counts.push_back(sample ? static_cast<int>(sample->x) : 0);
      state->arrived.notify_all();
    };
  }
  bool waitForMore(std::size_t more) {
    std::unique_lock lock(state_->mutex);
    const std::size_t wanted = state_->counts.size() + more;
    return state_->arrived.wait_for(lock, kLongest,
                                    [&] { return state_->counts.size() >= wanted; });
  }
  std::vector<int> counts() {
    const std::lock_guard lock(state_->mutex);
    return state_->counts;
  }

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable arrived;
    std::vector<int> counts;
  };
  std::shared_ptr<State> state_ = std::make_shared<State>();
};

class LinuxMotionSourceTest : public testing::Test {
 protected:
  // The threads end by themselves once nobody wants samples.
  ~LinuxMotionSourceTest() override {
    for (std::size_t i = 0; i < kSensorKinds; ++i) {
      sensors_->setHanging(static_cast<SensorKind>(i), false);
    }
    EXPECT_FALSE(sensors_->wasShared());
    manager_.reset();
    source_.reset();
    sensors_.reset();
    EXPECT_EQ(gone_.wait_for(kLongest), std::future_status::ready);
  }

  /// A sensor that is called again has posted what it read before.
  bool waitForPost(SensorKind kind) {
    return sensors_->waitForCalls(kind, sensors_->calls(kind) + 3);
  }
  void start(MotionSensor sensor, Inbox& inbox) {
    manager_->startUpdates(sensor, queue_, inbox.handler());
  }

  std::promise<void> goneSignal_;
  std::future<void> gone_ = goneSignal_.get_future();
  std::shared_ptr<ScriptedSensors> sensors_ =
      std::make_shared<ScriptedSensors>(std::move(goneSignal_));
  std::shared_ptr<ThreadMainQueue> queue_ = std::make_shared<ThreadMainQueue>();
  // Runs nothing until the test lets it.
  std::shared_ptr<ManualExecutor> held_ = std::make_shared<ManualExecutor>();
  std::shared_ptr<LinuxMotionSource> source_ =
      std::make_shared<LinuxMotionSource>(sensors_, queue_);
  std::shared_ptr<MotionManager> manager_ = source_->makeManager();
};

// A sensor may hang where it is looked for and where it is read.
TEST_F(LinuxMotionSourceTest, ASensorThatHangsHoldsUpNobody) {
  for (const bool hangsInSearch : {true, false}) {
    Inbox hung;
    Inbox others;
    sensors_->setHanging(SensorKind::gyroscope, hangsInSearch);
    start(MotionSensor::gyroscope, hung);
    start(MotionSensor::accelerometer, others);
    start(MotionSensor::magnetometer, others);
    if (!hangsInSearch) {
      ASSERT_TRUE(hung.waitForMore(1));
      sensors_->setHanging(SensorKind::gyroscope, true);
    }
    ASSERT_TRUE(sensors_->waitForHang(SensorKind::gyroscope));
    std::promise<void> delivered;  // what was read before
    queue_->post([&] { delivered.set_value(); });
    delivered.get_future().wait();
    ASSERT_TRUE(others.waitForMore(50));

    // However often it is started meanwhile: one call, so one thread.
    const std::size_t received = hung.counts().size();
    Inbox later;
    int calls = 0;
    for (int i = 0; i < 20; ++i) {
      manager_ = source_->makeManager();
      start(MotionSensor::accelerometer, others);
      start(MotionSensor::gyroscope, later);
      ASSERT_TRUE(others.waitForMore(2));
      if (i == 0) calls = sensors_->calls(SensorKind::gyroscope);
    }
    EXPECT_EQ(sensors_->calls(SensorKind::gyroscope), calls);
    EXPECT_TRUE(later.counts().empty());

    sensors_->setHanging(SensorKind::gyroscope, false);
    EXPECT_TRUE(later.waitForMore(5));
    EXPECT_GT(later.counts().front(), calls) << "what was read for an earlier start";
    EXPECT_EQ(hung.counts().size(), received);
    manager_ = source_->makeManager();
  }
}

// While one has a sensor of its own, the other reads one sensor alone, and nobody watches it.
TEST_F(LinuxMotionSourceTest, ASensorThatRecoversIsReadWhileTheNextOneHangs) {
  Inbox recovered;
  Inbox hung;
  sensors_->setHanging(SensorKind::gyroscope, true);
  start(MotionSensor::gyroscope, recovered);
  start(MotionSensor::accelerometer, hung);
  ASSERT_TRUE(hung.waitForMore(5));
  sensors_->setHanging(SensorKind::accelerometer, true);
  ASSERT_TRUE(sensors_->waitForHang(SensorKind::accelerometer));
  sensors_->setHanging(SensorKind::gyroscope, false);
  EXPECT_TRUE(recovered.waitForMore(50));
}

TEST_F(LinuxMotionSourceTest, ASampleThatWaitsOnTheQueueOutlivesNeitherAnotherStartNorAStop) {
  Inbox replaced;
  Inbox stopped;
  manager_->startUpdates(MotionSensor::accelerometer, held_, replaced.handler());
  ASSERT_TRUE(waitForPost(SensorKind::accelerometer));
  const int calls = sensors_->calls(SensorKind::accelerometer);
  manager_->startUpdates(MotionSensor::accelerometer, held_, stopped.handler());
  ASSERT_TRUE(waitForPost(SensorKind::accelerometer));
  held_->run();
  EXPECT_TRUE(replaced.counts().empty());
  ASSERT_FALSE(stopped.counts().empty());
  EXPECT_GT(stopped.counts().front(), calls) << "what was read for the earlier start";

  const std::size_t received = stopped.counts().size();
  ASSERT_TRUE(waitForPost(SensorKind::accelerometer));
  manager_->stopUpdates(MotionSensor::accelerometer);
  held_->run();
  EXPECT_EQ(stopped.counts().size(), received);
}

TEST_F(LinuxMotionSourceTest, AHandlerMayStopItsSensorInTheMiddleOfAPost) {
  std::vector<int> counts;
  manager_->startUpdates(MotionSensor::accelerometer, held_, [&](const auto& sample) {
    counts.push_back(static_cast<int>(sample->x));
    if (counts.size() == 3) manager_->stopUpdates(MotionSensor::accelerometer);
  });
  ASSERT_TRUE(sensors_->waitForCalls(SensorKind::accelerometer, 10));
  held_->run();
  EXPECT_EQ(counts, (std::vector{2, 3, 4})) << "the first call was the search";
}

// What a host captures may call back when it is destroyed.
TEST_F(LinuxMotionSourceTest, HandlersAreDestroyedOffTheLock) {
  const auto capturing = [&](std::promise<void>& dropped) {
    std::shared_ptr<void> calling(&dropped, [source = source_](void* promise) {
      source->makeManager()->isAvailable(MotionSensor::gyroscope);
      static_cast<std::promise<void>*>(promise)->set_value();
    });
    return [calling = std::move(calling)](const auto&) {};
  };
  std::promise<void> replaced, stopped, destroyed, missing;
  manager_->startUpdates(MotionSensor::accelerometer, held_, capturing(replaced));
  manager_->startUpdates(MotionSensor::accelerometer, held_, capturing(stopped));
  manager_->stopUpdates(MotionSensor::accelerometer);
  manager_->startUpdates(MotionSensor::accelerometer, held_, capturing(destroyed));
  manager_ = source_->makeManager();
  sensors_->setMissing(SensorKind::gyroscope, true);
  manager_->startUpdates(MotionSensor::gyroscope, queue_, capturing(missing));
  for (std::promise<void>* const promise : {&replaced, &stopped, &destroyed, &missing}) {
    EXPECT_EQ(promise->get_future().wait_for(kLongest), std::future_status::ready);
  }
  EXPECT_FALSE(manager_->isAvailable(MotionSensor::gyroscope));
  EXPECT_TRUE(manager_->isAvailable(MotionSensor::accelerometer));
}

TEST_F(LinuxMotionSourceTest, StartsAndStopsOfManyThreadsLeaveNobodyBehind) {
  Inbox inbox;
  std::array<std::thread, 3> threads;
  for (std::size_t i = 0; i < threads.size(); ++i) {
    threads[i] = std::thread([&, i] {
      for (std::size_t round = 0; round < 100; ++round) {
        const auto manager = source_->makeManager();
        const auto sensor = static_cast<MotionSensor>((i + round) % 4);
        manager->setUpdateInterval(sensor, std::chrono::microseconds(10 * i));
        manager->startUpdates(sensor, queue_, inbox.handler());
        EXPECT_TRUE(round % 10 != 0 || inbox.waitForMore(1));
        if (round % 2 == 0) manager->stopUpdates(sensor);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

// The child has no thread of the sampler, and perhaps a lock that nobody holds.
TEST_F(LinuxMotionSourceTest, AForkedChildDoesNothing) {
  manager_->startUpdates(MotionSensor::gyroscope, held_, [parent = getpid()](const auto&) {
    if (getpid() != parent) _exit(3);
  });
  ASSERT_TRUE(waitForPost(SensorKind::gyroscope));
  std::atomic<bool> isOver{false};
  std::thread busy([&, manager = source_->makeManager()] {
    while (!isOver) manager->isAvailable(MotionSensor::gyroscope);
  });
  for (int i = 0; i < 20; ++i) {
    EXPECT_TRUE(childEndsWell([&] {
      if (manager_->isAvailable(MotionSensor::accelerometer)) _exit(4);
      manager_->setUpdateInterval(MotionSensor::accelerometer, std::chrono::microseconds(1));
      manager_->startUpdates(MotionSensor::accelerometer, held_, [](const auto&) {});
      manager_->stopUpdates(MotionSensor::accelerometer);
      held_->run();
      manager_.reset();
      source_.reset();
    }));
  }
  isOver = true;
  busy.join();
}

}  // namespace
}  // namespace quorvance
