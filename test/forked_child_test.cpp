#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <thread>

#include "platform/testing/forked_child_test_support.h"
#include "platform/testing/test_world.h"
#include "quorvance/account_check_points.h"
#include "quorvance/inspection.h"
#include "quorvance/platform/gesture.h"
#include "quorvance/platform/host_loop_queue.h"
#include "test/real_world_test_support.h"

namespace quorvance {
namespace {

// The last of this program's own static objects to be destroyed: what a leak checker says of a
// child, in which the threads that own most of the memory do not exist, is not asked for.
struct EndOfChild {
  static inline bool isChild = false;
  ~EndOfChild() {
    if (isChild) _exit(kChildIsWell);
  }
};
const EndOfChild endOfChild;

/// Takes no work: the child's is never to be done.
class ForbiddenQueue : public BackgroundQueue {
 public:
  void post(WorkLane /*lane*/, Task /*task*/) override { _exit(5); }
};

// The child has no thread of the library and may have been born while another one held its locks.
TEST(ForkedChildTest, EveryOperationReturnsAtOnceAndDoesNothing) {
  // The process's context keeps the platform for ever, and takes it once: not in a repetition.
  static auto* const world = new TestWorld();
  static_cast<void>(QuorvanceManager::usePlatform(world->platform()));
  const auto manager = QuorvanceManager::shared();
  const auto listener = manager->startNewScreenListener(ScreenListenerType::PINCODE, 1, nullptr);
  std::atomic<bool> isOver{false};
  std::thread busy([&] {
    while (!isOver) {
      QuorvanceManager::shared()->setUserId("u");
      QuorvanceManager::setShared(manager);
      for (int i = 0; i < 100; ++i) listener->pauseListenToSensors();
    }
  });
  for (int i = 0; i < 20; ++i) {
    EXPECT_TRUE(childEndsWell([&] {
      const auto inherited = QuorvanceManager::shared();
      bool isIdle = !inherited->setupWithServerUrl("http://risk.test/", "u");
      inherited->getRiskForCheckPoint(Launch(), [](Risk, std::string, std::string) { _exit(3); });
      manager->logout();
      manager->setLogoutEventNow(true);
      isIdle = isIdle && !manager->logoutEventNow() && !manager->getSessionId();
      isIdle = isIdle && !QuorvanceManager().getDeviceId();
      isIdle = isIdle && !QuorvanceManager::usePlatform({});
      QuorvanceManager::setShared(nullptr);
      QuorvanceManager::log("nothing");
      listener->resumeListen();
      listener->pauseListenToSensors();
      listener->handleTouches(QuorvanceGestureRecognizer(nullptr));
      listener->finishScreenListener();
      manager->startNewScreenListener(ScreenListenerType::PINCODE, 1, nullptr)
          ->finishScreenListener();
      Platform idlePlatform = world->platform();
      idlePlatform.backgroundQueue = std::make_shared<ForbiddenQueue>();
      inspectDevice(idlePlatform, [](const std::vector<InspectedField>&) { _exit(6); });
      if (!isIdle) _exit(4);
    }));
  }
  isOver = true;
  busy.join();
}

/// A host's objects, all its own, with every thread of the library started and no work deferred,
/// which would keep the manager.
struct BusyHost {
  explicit BusyHost(const RealWorld& world, std::shared_ptr<MainQueue> queue = nullptr)
      : platform(world.platform(std::move(queue))),
        manager(std::make_unique<QuorvanceManager>(platform)) {
    manager->setServerUrl(world.server.url());
    platform.mainQueue->post([] {});
    VerdictInbox inbox;
    manager->getRiskForCheckPoint(Launch(), inbox.completion());
    EXPECT_EQ(inbox.wait(1).size(), 1U);
  }

  Platform platform;
  std::unique_ptr<QuorvanceManager> manager;
};

// Their locks are held by threads that the child does not have, and waiters are counted that will
// never leave.
TEST(ForkedChildTest, WhatTheHostOwnsCanBeDestroyed) {
  const RealWorld world;
  for (const bool hasOwnLoop : {false, true}) {
    const auto loop = std::make_shared<HostLoopQueue>();
    BusyHost host(world, hasOwnLoop ? loop : nullptr);
    std::atomic<bool> isOver{false};
    std::thread busy([&] {
      while (!isOver) {
        host.platform.mainQueue->post([] {});
        loop->dispatch();
        host.platform.backgroundQueue->post(WorkLane::completions, [] {});
        host.platform.http->dispatch([] {});
      }
    });
    for (int i = 0; i < 10; ++i) {
      EXPECT_TRUE(childEndsWell([&] {
        loop->post([] {});
        loop->dispatch();
        host.manager.reset();
        host.platform = Platform();
      }));
      EXPECT_TRUE(childEndsWell([&] {
        EndOfChild::isChild = true;
        static BusyHost* const moved = &host;
        struct AtExit {
          ~AtExit() {
            moved->manager.reset();
            moved->platform = Platform();
          }
        };
        static const AtExit atExit;
        std::exit(1);
      }));
    }
    isOver = true;
    busy.join();
  }
}

}  // namespace
}  // namespace quorvance
