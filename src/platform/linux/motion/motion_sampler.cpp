#include "platform/linux/motion/motion_sampler.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "base/forked_child.h"
#include "platform/linux/threads/library_thread.h"

namespace quorvance {
namespace {

using Clock = std::chrono::steady_clock;

/// Runs the work; where it finds no memory, the rest of it is lost.
template <class Work>
void attempt(Work work) noexcept {
  try {
    work();
  } catch (const std::exception&) {
    // Lost, as said.
  }
}

}  // namespace

bool MotionSampler::isAvailable(MotionSensor sensor) const {
  const std::lock_guard lock(mutex_);
  return plan_.isAvailable(sensor, Clock::now());
}

void MotionSampler::start(MotionSubscription subscription) {
  SamplingPlan::Subscriptions replaced;  // destroyed after the lock is released
  const std::lock_guard lock(mutex_);
  replaced = plan_.take(subscription.owner, subscription.sensor);
  plan_.add(std::move(subscription), Clock::now());
  startMissingThreads();
  changed_.notify_all();
}

void MotionSampler::stop(const void* owner, std::optional<MotionSensor> sensor) {
  SamplingPlan::Subscriptions stopped;  // destroyed after the lock is released
  const std::lock_guard lock(mutex_);
  stopped = plan_.take(owner, sensor);
  changed_.notify_all();
}

void MotionSampler::setInterval(const void* owner, MotionSensor sensor,
                                std::chrono::microseconds interval) {
  const std::lock_guard lock(mutex_);
  plan_.setInterval(owner, sensor, interval);
}

// --- which threads there are ---------------------------------------------------------------------

bool MotionSampler::isReadInRounds(const SensorChannel& channel) {
  return channel.ownThread == kNoThread;
}

/// Under the lock, like all that follow. Without a thread to be had, nobody is started.
MotionSampler::ThreadNumber MotionSampler::startThread() {
  if (threads_ == kMaxThreads) return kNoThread;
  const ThreadNumber number = ++lastThread_;
  LibraryThread thread;
  bool isStarted = false;
  attempt([&] {
    isStarted =
        thread.start("qv-motion", [self = shared_from_this(), number] { self->run(number); });
  });
  if (!isStarted) return kNoThread;
  thread.detach();
  ++threads_;
  return number;
}

void MotionSampler::startMissingThreads() {
  if (leader_ == kNoThread) {
    leader_ = startThread();
  } else if (watcher_ == kNoThread && isWatcherNeeded()) {
    watcher_ = startThread();
  }
}

/// Whether there is a sensor that the leader could leave unread.
bool MotionSampler::isWatcherNeeded() const {
  std::size_t waiting = 0;
  bool isLeaderReading = false;
  for (const SensorChannel& channel : plan_.channels()) {
    if (!isReadInRounds(channel)) continue;
    if (channel.readingSince) {
      isLeaderReading = true;
    } else if (plan_.due(channel)) {
      ++waiting;
    }
  }
  return waiting > (isLeaderReading ? 0 : 1);
}

SensorChannel* MotionSampler::channelOf(ThreadNumber thread) {
  auto& channels = plan_.channels();
  const auto found =
      std::find_if(channels.begin(), channels.end(),
                   [&](const SensorChannel& channel) { return channel.ownThread == thread; });
  return found == channels.end() ? nullptr : &*found;
}

// --- what a thread does --------------------------------------------------------------------------

void MotionSampler::run(ThreadNumber me) {
  Lock lock(mutex_);
  for (;;) {
    // Others change what a thread is for while it is in a call or waits.
    if (me == leader_) {
      lead(me, lock);
    } else if (me == watcher_) {
      watch(me, lock);
    } else if (SensorChannel* const own = channelOf(me)) {
      serve(*own, me, lock);
    } else {
      break;
    }
  }
  --threads_;
}

/// One round, or the wait for it.
void MotionSampler::lead(ThreadNumber me, Lock& lock) {
  startMissingThreads();
  std::optional<MotionTime> first;
  for (const SensorChannel& channel : plan_.channels()) {
    const auto due = plan_.due(channel);
    if (due && isReadInRounds(channel) && (!first || *due < *first)) first = due;
  }
  if (!first) {
    leader_ = kNoThread;
  } else if (*first > Clock::now()) {
    changed_.wait_until(lock, *first);
  } else {
    readRound(me, lock);
    postAll(lock);
  }
}

void MotionSampler::readRound(ThreadNumber me, Lock& lock) {
  for (SensorChannel& channel : plan_.channels()) {
    const auto due = plan_.due(channel);
    if (!due || !isReadInRounds(channel)) continue;
    if (*due > Clock::now() + SamplingPlan::kEarliness) continue;
    read(channel, lock);
    if (me != leader_) return;  // the others have been taken over
  }
}

/// Takes the sensors over from a leader that hangs, or waits until it could.
void MotionSampler::watch(ThreadNumber me, Lock& lock) {
  if (!isWatcherNeeded()) {
    watcher_ = kNoThread;
    return;
  }
  const auto now = Clock::now();
  auto& channels = plan_.channels();
  const auto reading = std::find_if(
      channels.begin(), channels.end(),
      [](const SensorChannel& channel) { return isReadInRounds(channel) && channel.readingSince; });
  const MotionTime since = reading == channels.end() ? now : *reading->readingSince;
  const bool isHung = now - since >= kHungAfter;
  if (!isHung && leader_ != kNoThread) {
    changed_.wait_until(lock, since + kHungAfter);
    return;
  }
  if (isHung) reading->ownThread = leader_;
  leader_ = me;
  watcher_ = kNoThread;
}

/// One reading of a sensor that is the thread's own, or the wait for it.
void MotionSampler::serve(SensorChannel& channel, ThreadNumber me, Lock& lock) {
  const auto due = plan_.due(channel);
  const auto began = Clock::now();
  if (due && *due > began) {
    changed_.wait_until(lock, *due);
    return;
  }
  if (due) read(channel, lock);
  if (!due || Clock::now() - began < kHungAfter) {
    channel.ownThread = kNoThread;
    // The leader may hang, and have had nothing until now that it could leave unread.
    if (leader_ == kNoThread) {
      leader_ = me;
    } else if (watcher_ == kNoThread && isWatcherNeeded()) {
      watcher_ = me;
    }
    changed_.notify_all();
  }
  postAll(lock);
}

// --- reading and delivering ----------------------------------------------------------------------

/// Releases the lock while the sensor is asked.
void MotionSampler::read(SensorChannel& channel, Lock& lock) {
  plan_.beginReading(channel, Clock::now());
  const bool isSearch = channel.search == SensorChannel::Search::running;
  std::shared_ptr<SensorReader> reader = isSearch ? nullptr : channel.reader;
  std::optional<MotionSample> sample;
  lock.unlock();
  attempt([&] {
    if (isSearch) reader = finder_->find(channel.kind);
    if (reader) sample = reader->read();
  });
  const auto now = Clock::now();
  lock.lock();
  if (isSearch) plan_.endSearch(channel, std::move(reader), now);
  plan_.endReading(channel, sample, now, outbox_);
}

/// Releases the lock while the queues are called.
void MotionSampler::postAll(Lock& lock) {
  std::vector<SampleOutbox::Post> posts = outbox_.takeUnposted();
  SamplingPlan::Subscriptions missing = plan_.takeMissing();
  if (posts.empty() && missing.empty()) return;
  lock.unlock();
  for (SampleOutbox::Post& post : posts) {
    attempt([&] {
      post.queue->post([sampler = weak_from_this(), batch = std::move(post.batch)] {
        if (const auto self = sampler.lock()) self->deliver(*batch);
      });
    });
  }
  for (MotionSubscription& subscription : missing) {
    // What a host has captured is destroyed on its own queue.
    attempt([&] { subscription.queue->post([handler = std::move(subscription.handler)] {}); });
  }
  posts.clear();
  missing.clear();
  lock.lock();
}

std::shared_ptr<const MotionHandler> MotionSampler::handlerOf(std::uint64_t subscription) const {
  const std::lock_guard lock(mutex_);
  const MotionSubscription* const found = plan_.find(subscription);
  return found == nullptr ? nullptr : found->handler;
}

/// On the queue. Each subscription is looked up right before its sample: a handler may stop others.
void MotionSampler::deliver(SampleOutbox::Batch& batch) {
  if (isForkedChild()) return;
  std::vector<SampleOutbox::Item> items;
  {
    const std::lock_guard lock(mutex_);
    items = SampleOutbox::open(batch);
  }
  for (const SampleOutbox::Item& item : items) {
    if (const auto handler = handlerOf(item.subscription)) (*handler)(item.sample);
  }
}

}  // namespace quorvance
