#include "device/device_facts_cache.h"

#include <atomic>
#include <utility>

namespace quorvance {
namespace {

template <class Facts>
Facts readOrUnknown(const std::shared_ptr<FactSource<Facts>>& source) {
  return source ? source->read() : Facts{};
}

}  // namespace

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

DeviceFactsCache::DeviceFactsCache(const Platform& platform, std::shared_ptr<SystemTexts> texts)
    : sources_(platform.facts),
      backgroundQueue_(platform.backgroundQueue),
      mainQueue_(platform.mainQueue),
      texts_(std::move(texts)) {}

std::shared_ptr<const DeviceFacts> DeviceFactsCache::snapshot() const {
  const std::lock_guard lock(mutex_);
  return facts_;
}

struct DeviceFactsCache::Round {
  std::vector<std::shared_ptr<Waiter>> waiters;
};

void DeviceFactsCache::join(NextRound& next, Task task, void (DeviceFactsCache::*read)()) {
  auto waiter = std::make_shared<Waiter>();
  waiter->queue = backgroundQueue_;
  waiter->task = std::move(task);
  mainQueue_->postAfter(kFactsPatience, [waiter] { waiter->release(); });
  auto round = std::make_shared<Round>();
  {
    const std::lock_guard lock(mutex_);
    const std::shared_ptr<Round> waiting = next.lock();
    auto& waiters = waiting ? waiting->waiters : round->waiters;
    // Those whose patience has ended wait no more.
    std::erase_if(waiters, [](const auto& other) { return other->isReleased.load(); });
    waiters.push_back(std::move(waiter));
    if (waiting) return;
    next = round;
  }
  backgroundQueue_->post(WorkLane::facts, [self = shared_from_this(), &next, round, read] {
    {
      const std::lock_guard lock(self->mutex_);
      next.reset();
    }
    (*self.*read)();
    for (const auto& released : round->waiters) released->release();
  });
}

void DeviceFactsCache::whenSystemKnown(Task task) {
  join(nextSystemRound_, std::move(task), &DeviceFactsCache::readSystem);
}

void DeviceFactsCache::whenRefreshed(Task task) {
  join(nextWholeRound_, std::move(task), &DeviceFactsCache::readWhole);
}

void DeviceFactsCache::readWhole() {
  readSystem();
  readAll();
}

template <class Change>
void DeviceFactsCache::change(Change&& changeFacts) {
  auto fresh = std::make_shared<DeviceFacts>(*snapshot());
  changeFacts(*fresh);
  const std::lock_guard lock(mutex_);
  facts_ = std::move(fresh);
}

// Hardware and system do not change under a running process.
void DeviceFactsCache::readSystem() {
  {
    const std::lock_guard lock(mutex_);
    if (std::exchange(isSystemKnown_, true)) return;
  }
  SystemFacts system = readOrUnknown(sources_.system);
  texts_->setSystemVersion(system.systemVersion);
  change([&](DeviceFacts& facts) { facts.system = std::move(system); });
}

void DeviceFactsCache::readAll() {
  DeviceFacts fresh;
  fresh.screen = readOrUnknown(sources_.screen);
  fresh.fonts = readOrUnknown(sources_.fonts);
  fresh.power = readOrUnknown(sources_.power);
  fresh.accessibility = readOrUnknown(sources_.accessibility);
  fresh.network = readOrUnknown(sources_.network);
  change([&](DeviceFacts& facts) {
    fresh.system = facts.system;
    facts = std::move(fresh);
  });
}

}  // namespace quorvance
