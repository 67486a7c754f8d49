#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <vector>

#include "quorvance/platform/platform.h"
#include "state/system_texts.h"

namespace quorvance {

/// Everything that was read of the device, at the moment of the last refresh.
struct DeviceFacts {
  SystemFacts system;
  ScreenFacts screen;
  FontFacts fonts;
  PowerFacts power;
  AccessibilityFacts accessibility;
  NetworkFacts network;
};

/// How long a payload waits for facts that are being read.
inline constexpr std::chrono::seconds kFactsPatience{2};

/// Reads device facts on the fact lane and keeps the last answers, so that no host call waits for
/// a file or a bus. Any thread, guarded by one mutex.
///
/// A refresh runs in two steps: what the start-up exchanges need (a few small files), then
/// everything else. Asks made while one waits to start share it, so a bus that hangs holds one
/// task.
class DeviceFactsCache : public std::enable_shared_from_this<DeviceFactsCache> {
 public:
  DeviceFactsCache(const Platform& platform, std::shared_ptr<SystemTexts> texts);

  /// What is known now; never waits.
  std::shared_ptr<const DeviceFacts> snapshot() const;

  /// Runs the task on the background queue, once: after the system facts have been read, or when
  /// patience is at its end.
  void whenSystemKnown(Task task);
  /// The same after a whole refresh that began with this call or later.
  void whenRefreshed(Task task);

 private:
  struct Waiter;
  /// The asks that one task on the fact lane will answer. The task owns them: they hold what holds
  /// this cache, and must go with a queue that drops its work.
  struct Round;
  using NextRound = std::weak_ptr<Round>;

  void join(NextRound& next, Task task, void (DeviceFactsCache::*read)());
  void readSystem();
  void readWhole();
  void readAll();
  template <class Change>
  void change(Change&& changeFacts);

  // Not the whole platform: the cache lives as long as work that its own queues hold.
  const DeviceFactSources sources_;
  const std::shared_ptr<BackgroundQueue> backgroundQueue_;
  const std::shared_ptr<MainQueue> mainQueue_;
  const std::shared_ptr<SystemTexts> texts_;

  mutable std::mutex mutex_;
  std::shared_ptr<const DeviceFacts> facts_ = std::make_shared<const DeviceFacts>();
  bool isSystemKnown_ = false;
  NextRound nextSystemRound_;
  NextRound nextWholeRound_;
};

}  // namespace quorvance
