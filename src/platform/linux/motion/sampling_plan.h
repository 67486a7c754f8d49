#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <list>
#include <memory>
#include <optional>

#include "platform/linux/motion/gravity_filter.h"
#include "platform/linux/motion/sample_outbox.h"
#include "platform/linux/motion/sensor_reader.h"
#include "quorvance/platform/motion.h"
#include "quorvance/platform/queues.h"

namespace quorvance {

using MotionTime = std::chrono::steady_clock::time_point;

/// One start of one sensor by one manager.
struct MotionSubscription {
  /// Whose; only compared.
  const void* owner = nullptr;
  MotionSensor sensor = MotionSensor::accelerometer;
  std::chrono::microseconds interval{0};
  std::shared_ptr<MainQueue> queue;
  std::shared_ptr<const MotionHandler> handler;

  /// The generation of its samples: no two starts have the same.
  std::uint64_t number = 0;
  MotionTime due = {};
  /// The reading in progress whose sample it gets.
  std::optional<SensorKind> awaited = std::nullopt;
  GravityFilter gravity = {};
};

/// A sensor of the hardware as it is known so far.
struct SensorChannel {
  enum class Search { due, running, found, missing };

  const SensorKind kind;
  Search search = Search::due;
  std::shared_ptr<SensorReader> reader = nullptr;
  /// What the last search that ended came to, and when.
  std::optional<bool> isPresent = std::nullopt;
  MotionTime searched = {};
  /// While a thread is in a call of the reader or the finder.
  std::optional<MotionTime> readingSince = std::nullopt;
  /// The thread that alone serves it; 0 while it is one of those that are read in rounds.
  std::uint64_t ownThread = 0;
};

/// When a reading is due that follows the one due at `due` and made at `now`: in the same rhythm,
/// and without making up for what was missed.
MotionTime nextReading(MotionTime due, std::chrono::microseconds interval, MotionTime now);

/// Who wants which samples, and what is to be read for it and when: the decisions of the sampler,
/// without its threads. Not thread-safe: guarded by its owner. Stopping allocates nothing.
class SamplingPlan {
 public:
  using Subscriptions = std::list<MotionSubscription>;

  /// A sensor that was missing is believed to be so for this long; then nobody knows.
  static constexpr std::chrono::seconds kAbsenceBelieved{10};
  /// A reading that is due so soon is made together with one that is due now: waking up costs more
  /// than reading.
  static constexpr std::chrono::milliseconds kEarliness{2};

  /// Whether the sensor can be read, true while nobody knows.
  bool isAvailable(MotionSensor sensor, MotionTime now) const;

  /// Adds a start, first due at once; its sensors are looked for anew.
  void add(MotionSubscription subscription, MotionTime now);
  /// Takes out what an owner has started: of one sensor, or of all.
  Subscriptions take(const void* owner, std::optional<MotionSensor> sensor);
  /// Takes out the starts of sensors that turned out to be missing.
  Subscriptions takeMissing();
  /// Null when it was stopped.
  const MotionSubscription* find(std::uint64_t number) const;
  void setInterval(const void* owner, MotionSensor sensor, std::chrono::microseconds interval);

  using Channels = std::array<SensorChannel, kSensorKinds>;
  Channels& channels() { return channels_; }
  const Channels& channels() const { return channels_; }
  /// When the channel is to be read next, absent when nobody wants it.
  std::optional<MotionTime> due(const SensorChannel& channel) const;
  /// A thread goes off to read, or first to search: whoever is due by now gets the sample.
  void beginReading(SensorChannel& channel, MotionTime now);
  /// A search that beginReading started has ended; null means missing.
  void endSearch(SensorChannel& channel, std::shared_ptr<SensorReader> reader, MotionTime now);

  /// The thread is back: the sample, if there is one, goes to each subscription that awaits it and
  /// still stands.
  void endReading(SensorChannel& channel, const std::optional<MotionSample>& sample, MotionTime now,
                  SampleOutbox& outbox);

 private:
  const SensorChannel& channel(SensorKind kind) const;
  const SensorChannel& channelFor(MotionSensor sensor) const;
  bool isBelievedMissing(SensorKind kind, MotionTime now) const;

  Subscriptions subscriptions_;  // in the order of their starts
  std::uint64_t lastNumber_ = 0;
  Channels channels_ = {SensorChannel{SensorKind::gravity}, SensorChannel{SensorKind::gyroscope},
                        SensorChannel{SensorKind::magnetometer},
                        SensorChannel{SensorKind::accelerometer}};
};

}  // namespace quorvance
