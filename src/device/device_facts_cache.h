#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "device/device_facts.h"

namespace quorvance {

/// How long a payload waits for facts that are being read.
inline constexpr std::chrono::seconds kFactsTimeout{2};

/// Reads device facts on the fact lane and keeps the last answers, so that no host call waits for
/// a file or a bus. Any thread, guarded by one mutex.
///
/// A refresh runs in two steps: what the start-up exchanges need (a few small files), then
/// everything else, group by group, each told as soon as it has been read. Asks made while one
/// waits to start share it, so a bus that hangs holds one task. Fonts are read once, and of the
/// system what does not change under a running process. Posture and battery are read in debug mode
/// only; while collection is off nothing is.
class DeviceFactsCache : public std::enable_shared_from_this<DeviceFactsCache> {
 public:
  /// The system's facts come from the reader, all others from the platform's sources.
  DeviceFactsCache(const Platform& platform, std::shared_ptr<SystemTexts> texts,
                   std::shared_ptr<SystemFactsReader> system);

  /// What is known now; never waits. Before anything was read: what the environment names.
  std::shared_ptr<const DeviceFacts> snapshot() const;

  /// Runs the task on the background queue, once: after the system facts have been read, or when
  /// the timeout has come.
  void whenSystemKnown(Task task);
  /// The same after a whole refresh that began with this call or later.
  void whenRefreshed(Task task);
  /// Asks for a whole refresh that nobody waits for. From the first one on, a change of the network
  /// has its facts read again.
  void refresh();

 private:
  struct Waiter;
  /// The asks that one task on the fact lane will answer. The task owns them: they hold what holds
  /// this cache, and must go with a queue that drops its work.
  struct Round;
  using NextRound = std::weak_ptr<Round>;

  void join(NextRound& next, Task task, void (DeviceFactsCache::*step)());
  void carryOut(void (DeviceFactsCache::*step)());
  /// Null when there is no task.
  std::shared_ptr<Waiter> waiterFor(Task task);
  void readSystemOnce();
  void takeSystem(std::optional<SystemFacts> system);
  void readFontsOnce();
  void readNetworkAlone();
  void watchNetwork();
  void readWhole();
  template <class Group>
  void readInto(Group DeviceFacts::*member, Group (*readGroup)(const DeviceFactSources&));
  template <class Change>
  void change(Change&& changeFacts);

  // Not the whole platform: the cache lives as long as work that its own queues hold.
  const DeviceFactSources sources_;
  const std::shared_ptr<BackgroundQueue> backgroundQueue_;
  const std::shared_ptr<MainQueue> mainQueue_;
  const std::shared_ptr<ReachabilityMonitor> reachability_;
  const std::shared_ptr<SystemTexts> texts_;
  const std::shared_ptr<SystemFactsReader> system_;

  mutable std::mutex mutex_;
  std::shared_ptr<const DeviceFacts> facts_;
  bool isSystemKnown_ = false;
  NextRound nextSystemRound_;
  NextRound nextWholeRound_;
  NextRound nextNetworkRound_;
  /// The fact lane's own.
  std::shared_ptr<void> networkSubscription_;
};

}  // namespace quorvance
