#include "platform/linux/motion/sampling_plan.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "platform/testing/manual_executor.h"

namespace quorvance {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using std::chrono::seconds;

/// Is there; the tests themselves say what it reads.
class FixedReader : public SensorReader {
 public:
  std::optional<MotionSample> read() override { return std::nullopt; }
  microseconds shortestInterval() const override { return milliseconds(10); }
};

class SamplingPlanTest : public testing::Test {
 protected:
  void start(MotionSensor sensor, microseconds interval = milliseconds(1)) {
    MotionSubscription subscription;
    subscription.sensor = sensor;
    subscription.interval = interval;
    subscription.queue = queue_;
    plan_.add(std::move(subscription), now_);
  }
  /// What a thread does with a channel that is due: searches where that is due, then reads.
  void serve(SensorKind kind, bool isPresent, std::optional<MotionSample> sample = MotionSample{}) {
    SensorChannel& channel = channelOf(kind);
    plan_.beginReading(channel, now_);
    if (channel.search == SensorChannel::Search::running) {
      plan_.endSearch(channel, isPresent ? std::make_shared<FixedReader>() : nullptr, now_);
    }
    plan_.endReading(channel, isPresent ? sample : std::nullopt, now_, outbox_);
  }
  SensorChannel& channelOf(SensorKind kind) {
    return plan_.channels()[static_cast<std::size_t>(kind)];
  }
  std::optional<microseconds> dueIn(SensorKind kind) {
    const auto due = plan_.due(channelOf(kind));
    if (!due) return std::nullopt;
    return std::chrono::duration_cast<microseconds>(*due - now_);
  }
  std::vector<SampleOutbox::Item> delivered() {
    const auto posts = outbox_.takeUnposted();
    return posts.empty() ? std::vector<SampleOutbox::Item>() : outbox_.open(*posts.front().batch);
  }

  std::shared_ptr<MainQueue> queue_ = std::make_shared<ManualExecutor>();
  SampleOutbox outbox_;
  SamplingPlan plan_;
  MotionTime now_{seconds(1000)};
};

TEST(NextReadingTest, KeepsTheRhythmAndMakesUpForNothing) {
  const MotionTime start;
  struct Case {
    int due, now, next;  // milliseconds, at an interval of 10
  };
  for (const Case& c : {Case{100, 100, 110}, Case{100, 103, 110}, Case{100, 98, 110},
                        Case{100, 110, 120}, Case{100, 5100, 5110}}) {
    EXPECT_EQ(
        nextReading(start + milliseconds(c.due), milliseconds(10), start + milliseconds(c.now)),
        start + milliseconds(c.next));
  }
}

TEST_F(SamplingPlanTest, TheAskedIntervalIsLimitedByTheSensors) {
  const std::pair<microseconds, microseconds> cases[] = {
      {microseconds::min(), milliseconds(10)},
      {milliseconds(25), milliseconds(25)},
      {microseconds::max(), std::chrono::hours(1)}};
  for (const auto& [asked, used] : cases) {
    start(MotionSensor::gyroscope, asked);
    EXPECT_EQ(dueIn(SensorKind::gyroscope), microseconds(0));
    serve(SensorKind::gyroscope, true);
    EXPECT_EQ(dueIn(SensorKind::gyroscope), used);
    plan_.take(nullptr, MotionSensor::gyroscope);
    EXPECT_EQ(dueIn(SensorKind::gyroscope), std::nullopt);
  }
}

TEST_F(SamplingPlanTest, OneReadingServesAllThatAreNearlyDue) {
  start(MotionSensor::accelerometer);
  now_ += milliseconds(2);
  start(MotionSensor::accelerometer);
  now_ -= milliseconds(2);
  serve(SensorKind::accelerometer, true);
  EXPECT_EQ(delivered().size(), 2U);
  EXPECT_EQ(dueIn(SensorKind::accelerometer), milliseconds(10));
  now_ += milliseconds(10);
  serve(SensorKind::accelerometer, true, std::nullopt);
  EXPECT_TRUE(delivered().empty()) << "a reading that failed";
}

TEST_F(SamplingPlanTest, GravityIsTheAccelerometersOnlyWithoutASensorOfItsOwn) {
  start(MotionSensor::deviceMotion);
  EXPECT_EQ(dueIn(SensorKind::accelerometer), std::nullopt);
  serve(SensorKind::gravity, true, MotionSample{0, 0, -1});
  EXPECT_EQ(delivered().at(0).sample.z, -1);
  EXPECT_EQ(dueIn(SensorKind::accelerometer), std::nullopt);

  start(MotionSensor::deviceMotion);
  serve(SensorKind::gravity, false);
  EXPECT_TRUE(plan_.takeMissing().empty());
  EXPECT_TRUE(dueIn(SensorKind::accelerometer));
  EXPECT_TRUE(plan_.isAvailable(MotionSensor::deviceMotion, now_));

  now_ += milliseconds(10);
  serve(SensorKind::accelerometer, false);
  EXPECT_EQ(plan_.takeMissing().size(), 2U);
  EXPECT_FALSE(plan_.isAvailable(MotionSensor::deviceMotion, now_));
}

// A turn of the device from its back to its side, seen at three rates.
TEST_F(SamplingPlanTest, DerivedGravityFollowsATurnInTheSameTimeAtAnyRate) {
  for (const int interval : {10, 50, 100}) {
    start(MotionSensor::deviceMotion);
    serve(SensorKind::gravity, false);
    now_ += milliseconds(10);
    serve(SensorKind::accelerometer, true, MotionSample{0, 0, -1});
    const auto first = delivered().at(0).sample;
    EXPECT_EQ(first.z, -1) << "gravity begins with the first sample";
    std::vector<SampleOutbox::Item> samples;
    for (milliseconds passed{0}; passed < GravityFilter::kTimeConstant;
         passed += milliseconds(interval)) {
      now_ += milliseconds(interval);
      serve(SensorKind::accelerometer, true, MotionSample{-1, 0, 0});
      samples = delivered();
    }
    EXPECT_NEAR(samples.at(0).sample.x, -(1 - std::exp(-1)), 1e-9) << interval;
    EXPECT_NEAR(samples.at(0).sample.z, -std::exp(-1), 1e-9) << interval;
    plan_.take(nullptr, std::nullopt);
  }
}

TEST_F(SamplingPlanTest, AnAbsenceIsBelievedForAWhileAndLookedIntoByEachStart) {
  EXPECT_TRUE(plan_.isAvailable(MotionSensor::gyroscope, now_)) << "nobody knows yet";
  start(MotionSensor::gyroscope);
  serve(SensorKind::gyroscope, false);
  EXPECT_EQ(plan_.takeMissing().size(), 1U);
  EXPECT_FALSE(plan_.isAvailable(MotionSensor::gyroscope, now_));
  EXPECT_TRUE(plan_.isAvailable(MotionSensor::gyroscope, now_ + SamplingPlan::kAbsenceBelieved));
  start(MotionSensor::gyroscope);
  serve(SensorKind::gyroscope, true);
  EXPECT_TRUE(plan_.takeMissing().empty());
  EXPECT_TRUE(plan_.isAvailable(MotionSensor::gyroscope, now_));
}

TEST_F(SamplingPlanTest, AStartDuringASearchIsSearchedForAgain) {
  start(MotionSensor::gyroscope);
  SensorChannel& channel = channelOf(SensorKind::gyroscope);
  plan_.beginReading(channel, now_);
  start(MotionSensor::gyroscope);
  plan_.endSearch(channel, nullptr, now_);
  plan_.endReading(channel, std::nullopt, now_, outbox_);
  EXPECT_TRUE(plan_.takeMissing().empty());
  EXPECT_EQ(channel.search, SensorChannel::Search::due);
}

TEST(SampleOutboxTest, OnePostWaitsOnAQueueAndTakesWhatComes) {
  SampleOutbox outbox;
  const std::shared_ptr<MainQueue> queue = std::make_shared<ManualExecutor>();
  const std::shared_ptr<MainQueue> other = std::make_shared<ManualExecutor>();
  outbox.add(queue, {1, {}});
  outbox.add(other, {2, {}});
  outbox.add(queue, {3, {}});
  auto posts = outbox.takeUnposted();
  ASSERT_EQ(posts.size(), 2U);
  EXPECT_EQ(posts[0].batch->items.size(), 2U);

  for (std::size_t i = 0; i < 2 * SampleOutbox::kMaxWaitingSamples; ++i) outbox.add(queue, {4, {}});
  EXPECT_TRUE(outbox.takeUnposted().empty());
  EXPECT_EQ(SampleOutbox::open(*posts[0].batch).size(), SampleOutbox::kMaxWaitingSamples);

  outbox.add(queue, {5, {}});  // the earlier post has been opened
  EXPECT_EQ(outbox.takeUnposted().size(), 1U);
  posts.clear();  // the queues drop their tasks
  outbox.add(other, {6, {}});
  EXPECT_EQ(outbox.takeUnposted().size(), 1U);
}

}  // namespace
}  // namespace quorvance
