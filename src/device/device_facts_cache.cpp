#include "device/device_facts_cache.h"

#include <atomic>
#include <utility>

#include "base/collection.h"
#include "base/debug.h"
#include "base/out_of_memory.h"

namespace quorvance {

// Whoever comes first, the facts or the clock, lets the task go.
struct DeviceFactsCache::Waiter {
  std::shared_ptr<BackgroundQueue> queue;
  Task task;
  std::atomic<bool> isReleased{false};

  void release() {
    if (isReleased.exchange(true)) return;
    queue->post(WorkLane::completions, std::exchange(task, nullptr));
  }
};

DeviceFactsCache::DeviceFactsCache(const Platform& platform, std::shared_ptr<SystemTexts> texts,
                                   std::shared_ptr<SystemFactsReader> system)
    : sources_(platform.facts),
      backgroundQueue_(platform.backgroundQueue),
      mainQueue_(platform.mainQueue),
      reachability_(platform.reachability),
      texts_(std::move(texts)),
      system_(std::move(system)),
      facts_(std::make_shared<const DeviceFacts>(DeviceFacts{.system = completed({}, *texts_)})) {}

std::shared_ptr<const DeviceFacts> DeviceFactsCache::snapshot() const {
  const std::lock_guard lock(mutex_);
  return facts_;
}

struct DeviceFactsCache::Round {
  std::vector<std::shared_ptr<Waiter>> waiters;
};

// The timer may have a thread started, which is not the host call's business. It is set on the lane
// on which it would release the task: where that hangs, nobody could.
std::shared_ptr<DeviceFactsCache::Waiter> DeviceFactsCache::waiterFor(Task task) {
  if (!task) return nullptr;
  auto waiter = std::make_shared<Waiter>();
  waiter->queue = backgroundQueue_;
  waiter->task = std::move(task);
  backgroundQueue_->post(WorkLane::completions, withinMemory([queue = mainQueue_, waiter] {
                           if (waiter->isReleased) return;
                           queue->postAfter(kFactsTimeout, [waiter] { waiter->release(); });
                         }));
  return waiter;
}

void DeviceFactsCache::join(NextRound& next, Task task, void (DeviceFactsCache::*step)()) {
  std::shared_ptr<Waiter> waiter = waiterFor(std::move(task));
  auto round = std::make_shared<Round>();
  {
    const std::lock_guard lock(mutex_);
    const std::shared_ptr<Round> waiting = next.lock();
    auto& waiters = waiting ? waiting->waiters : round->waiters;
    // Those whose timeout has come wait no more.
    std::erase_if(waiters, [](const auto& other) { return other->isReleased.load(); });
    if (waiter) waiters.push_back(std::move(waiter));
    if (waiting) return;
    next = round;
  }
  backgroundQueue_->post(WorkLane::facts, [self = shared_from_this(), &next, round, step] {
    {
      const std::lock_guard lock(self->mutex_);
      next.reset();
    }
    self->carryOut(step);
    for (const auto& released : round->waiters) released->release();
  });
}

// What there is no memory for stays unknown. While collection is off nothing is read, and the
// network is watched no more.
void DeviceFactsCache::carryOut(void (DeviceFactsCache::*step)()) {
  if (isCollectionEnabled()) {
    hasMemoryFor([&] { (this->*step)(); });
  } else {
    networkSubscription_.reset();
  }
}

void DeviceFactsCache::whenSystemKnown(Task task) {
  join(nextSystemRound_, std::move(task), &DeviceFactsCache::readSystemOnce);
}

void DeviceFactsCache::whenRefreshed(Task task) {
  join(nextWholeRound_, std::move(task), &DeviceFactsCache::readWhole);
}

void DeviceFactsCache::refresh() { whenRefreshed(nullptr); }

// Not in a host call: the first subscription may start a thread.
void DeviceFactsCache::watchNetwork() {
  if (!reachability_ || networkSubscription_) return;
  networkSubscription_ = reachability_->subscribe([weak = weak_from_this()](NetworkKind /*kind*/) {
    const auto self = weak.lock();
    if (self) self->join(self->nextNetworkRound_, nullptr, &DeviceFactsCache::readNetworkAlone);
  });
}

template <class Change>
void DeviceFactsCache::change(Change&& changeFacts) {
  auto fresh = std::make_shared<DeviceFacts>(*snapshot());
  changeFacts(*fresh);
  const std::lock_guard lock(mutex_);
  facts_ = std::move(fresh);
}

template <class Group>
void DeviceFactsCache::readInto(Group DeviceFacts::*member,
                                Group (*readGroup)(const DeviceFactSources&)) {
  Group fresh = readGroup(sources_);
  change([&](DeviceFacts& facts) { facts.*member = std::move(fresh); });
}

void DeviceFactsCache::readSystemOnce() {
  {
    const std::lock_guard lock(mutex_);
    if (isSystemKnown_) return;
  }
  takeSystem(system_->read());
}

// Absent while another thread is reading: no answer, so the next round asks again.
void DeviceFactsCache::takeSystem(std::optional<SystemFacts> system) {
  if (!system) return;
  SystemFacts told = completed(std::move(*system), *texts_);
  texts_->setSystemVersion(told.systemVersion);
  change([&](DeviceFacts& facts) { facts.system = std::move(told); });
  const std::lock_guard lock(mutex_);
  isSystemKnown_ = true;
}

void DeviceFactsCache::readFontsOnce() {
  if (snapshot()->fonts) return;
  auto fonts = std::make_shared<const FontFacts>(readFonts(sources_));
  change([&](DeviceFacts& facts) { facts.fonts = std::move(fonts); });
}

void DeviceFactsCache::readNetworkAlone() { readInto(&DeviceFacts::network, &readNetwork); }

// What may take longest comes last: what was read before it is told without it.
void DeviceFactsCache::readWhole() {
  takeSystem(system_->readAgain());
  watchNetwork();
  readInto(&DeviceFacts::screen, &readScreen);
  readInto(&DeviceFacts::accessibility, &readAccessibility);
  readNetworkAlone();
  readInto(&DeviceFacts::storage, &readStorage);
  readFontsOnce();
  if (!isInDebugMode()) return;
  readInto(&DeviceFacts::power, &readPower);
  readInto(&DeviceFacts::posture, &readPosture);
}

}  // namespace quorvance
