#include "platform/linux/motion/sampling_plan.h"

#include <algorithm>
#include <utility>

namespace quorvance {
namespace {

using Search = SensorChannel::Search;
using std::chrono::microseconds;

// Keeps times far from the end of their range.
constexpr std::chrono::hours kLongestInterval{1};

SensorKind kindOf(MotionSensor sensor) {
  switch (sensor) {
    case MotionSensor::deviceMotion:
      return SensorKind::gravity;
    case MotionSensor::gyroscope:
      return SensorKind::gyroscope;
    case MotionSensor::magnetometer:
      return SensorKind::magnetometer;
    case MotionSensor::accelerometer:
      break;
  }
  return SensorKind::accelerometer;
}

/// As asked for, as far as the sensor goes.
microseconds intervalOf(const MotionSubscription& subscription, const SensorChannel& channel) {
  const microseconds shortest =
      channel.reader ? channel.reader->shortestInterval() : kUsualSensorInterval;
  return std::clamp<microseconds>(subscription.interval, shortest, kLongestInterval);
}

/// Moves what the condition holds for to the list that is returned.
template <class Condition>
SamplingPlan::Subscriptions takeIf(SamplingPlan::Subscriptions& from, Condition condition) {
  SamplingPlan::Subscriptions taken;
  for (auto next = from.begin(); next != from.end();) {
    const auto current = next++;
    if (condition(*current)) taken.splice(taken.end(), from, current);
  }
  return taken;
}

}  // namespace

MotionTime nextReading(MotionTime due, microseconds interval, MotionTime now) {
  const MotionTime next = due + interval;
  return next > now ? next : now + interval;
}

const SensorChannel& SamplingPlan::channel(SensorKind kind) const {
  return channels_[static_cast<std::size_t>(kind)];
}

/// Without a gravity sensor, gravity comes from the accelerometer.
const SensorChannel& SamplingPlan::channelFor(MotionSensor sensor) const {
  const SensorChannel& own = channel(kindOf(sensor));
  const bool isDerived = sensor == MotionSensor::deviceMotion && own.search == Search::missing;
  return isDerived ? channel(SensorKind::accelerometer) : own;
}

bool SamplingPlan::isBelievedMissing(SensorKind kind, MotionTime now) const {
  const SensorChannel& known = channel(kind);
  return known.isPresent == false && now - known.searched < kAbsenceBelieved;
}

bool SamplingPlan::isAvailable(MotionSensor sensor, MotionTime now) const {
  if (!isBelievedMissing(kindOf(sensor), now)) return true;
  return sensor == MotionSensor::deviceMotion && !isBelievedMissing(SensorKind::accelerometer, now);
}

void SamplingPlan::add(MotionSubscription subscription, MotionTime now) {
  subscription.number = ++lastNumber_;
  subscription.due = now;
  const MotionSensor sensor = subscription.sensor;
  subscriptions_.push_back(std::move(subscription));
  channels_[static_cast<std::size_t>(kindOf(sensor))].search = Search::due;
  if (sensor == MotionSensor::deviceMotion) {
    channels_[static_cast<std::size_t>(SensorKind::accelerometer)].search = Search::due;
  }
}

SamplingPlan::Subscriptions SamplingPlan::take(const void* owner,
                                               std::optional<MotionSensor> sensor) {
  return takeIf(subscriptions_, [&](const MotionSubscription& subscription) {
    return subscription.owner == owner && (!sensor || subscription.sensor == *sensor);
  });
}

SamplingPlan::Subscriptions SamplingPlan::takeMissing() {
  return takeIf(subscriptions_, [&](const MotionSubscription& subscription) {
    return channelFor(subscription.sensor).search == Search::missing;
  });
}

const MotionSubscription* SamplingPlan::find(std::uint64_t number) const {
  const auto found = std::find_if(
      subscriptions_.begin(), subscriptions_.end(),
      [&](const MotionSubscription& subscription) { return subscription.number == number; });
  return found == subscriptions_.end() ? nullptr : &*found;
}

void SamplingPlan::setInterval(const void* owner, MotionSensor sensor, microseconds interval) {
  for (MotionSubscription& subscription : subscriptions_) {
    if (subscription.owner == owner && subscription.sensor == sensor) {
      subscription.interval = interval;
    }
  }
}

std::optional<MotionTime> SamplingPlan::due(const SensorChannel& channel) const {
  std::optional<MotionTime> first;
  for (const MotionSubscription& subscription : subscriptions_) {
    if (&channelFor(subscription.sensor) != &channel) continue;
    if (!first || subscription.due < *first) first = subscription.due;
  }
  return first;
}

void SamplingPlan::beginReading(SensorChannel& channel, MotionTime now) {
  channel.readingSince = now;
  if (channel.search == Search::due) channel.search = Search::running;
  for (MotionSubscription& subscription : subscriptions_) {
    if (&channelFor(subscription.sensor) != &channel) continue;
    if (subscription.due > now + kEarliness) continue;
    subscription.awaited = channel.kind;
    subscription.due = nextReading(subscription.due, intervalOf(subscription, channel), now);
  }
}

void SamplingPlan::endSearch(SensorChannel& channel, std::shared_ptr<SensorReader> reader,
                             MotionTime now) {
  channel.reader = std::move(reader);
  channel.isPresent = channel.reader != nullptr;
  channel.searched = now;
  // Due again when there was a start meanwhile.
  if (channel.search != Search::running) return;
  channel.search = *channel.isPresent ? Search::found : Search::missing;
}

void SamplingPlan::endReading(SensorChannel& channel, const std::optional<MotionSample>& sample,
                              MotionTime now, SampleOutbox& outbox) {
  channel.readingSince.reset();
  for (MotionSubscription& subscription : subscriptions_) {
    if (subscription.awaited != channel.kind) continue;
    subscription.awaited.reset();
    if (!sample) continue;
    const bool isDerived = subscription.sensor == MotionSensor::deviceMotion &&
                           channel.kind == SensorKind::accelerometer;
    outbox.add(
        subscription.queue,
        {subscription.number, isDerived ? subscription.gravity.filter(*sample, now) : *sample});
  }
}

}  // namespace quorvance
