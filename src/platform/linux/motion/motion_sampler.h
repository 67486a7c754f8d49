#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/linux/motion/sample_outbox.h"
#include "platform/linux/motion/sampling_plan.h"
#include "platform/linux/motion/sensor_reader.h"

namespace quorvance {

/// Reads sensors on threads of its own while anybody wants samples.
///
/// One thread, the leader, reads all sensors in rounds. While it has more than one to read, a
/// second one, the watcher, sees to it that none holds up the others: when a call has not returned
/// after kHungAfter, the sensor becomes the leader's own, and the watcher leads in its place. The
/// thread that was left with the sensor goes on with it alone and gives it back once it reads fast
/// again. So a sensor is never in two calls at a time, however often sampling is stopped and
/// started, and there are never more threads than kinds of sensors.
///
/// The threads are detached: nobody waits for one, and each ends when it has nothing to read. They
/// share the sampler, which so outlives who made it by the longest call of a sensor. Any thread;
/// guarded by mutex_, which is held during no call of a sensor, a queue or a handler.
class MotionSampler : public std::enable_shared_from_this<MotionSampler> {
 public:
  static constexpr std::size_t kMaxThreads = kSensorKinds;
  /// Some hundred times what a working sensor takes.
  static constexpr std::chrono::milliseconds kHungAfter{50};

  explicit MotionSampler(std::shared_ptr<SensorFinder> finder) : finder_(std::move(finder)) {}

  /// From memory, true while nobody knows.
  bool isAvailable(MotionSensor sensor) const;
  /// In place of the owner's earlier start of the sensor. Throws std::bad_alloc, and then nothing
  /// is started; without a thread to be had, the next start tries again.
  void start(MotionSubscription subscription);
  /// What an owner has started: of one sensor, or of all.
  void stop(const void* owner, std::optional<MotionSensor> sensor);
  void setInterval(const void* owner, MotionSensor sensor, std::chrono::microseconds interval);

 private:
  using Lock = std::unique_lock<std::mutex>;
  using ThreadNumber = std::uint64_t;
  static constexpr ThreadNumber kNoThread = 0;

  ThreadNumber startThread();
  void startMissingThreads();
  static bool isReadInRounds(const SensorChannel& channel);
  bool isWatcherNeeded() const;
  SensorChannel* channelOf(ThreadNumber thread);

  void run(ThreadNumber me);
  void lead(ThreadNumber me, Lock& lock);
  void readRound(ThreadNumber me, Lock& lock);
  void watch(ThreadNumber me, Lock& lock);
  void serve(SensorChannel& channel, ThreadNumber me, Lock& lock);
  void read(SensorChannel& channel, Lock& lock);
  void postAll(Lock& lock);
  std::shared_ptr<const MotionHandler> handlerOf(std::uint64_t subscription) const;
  void deliver(SampleOutbox::Batch& batch);

  const std::shared_ptr<SensorFinder> finder_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  SamplingPlan plan_;
  SampleOutbox outbox_;
  ThreadNumber lastThread_ = kNoThread;
  std::size_t threads_ = 0;
  ThreadNumber leader_ = kNoThread;
  ThreadNumber watcher_ = kNoThread;
};

}  // namespace quorvance
