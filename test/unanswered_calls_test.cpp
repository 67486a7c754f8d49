#include <gtest/gtest.h>

#include <atomic>
#include <future>

#include "platform/testing/memory_documents.h"
#include "test/real_world_test_support.h"

namespace quorvance {
namespace {

/// A disk that does not answer until it is released. It says when it was first asked.
class SilentDocuments : public MemoryDocuments {
 public:
  bool prepare() override {
    if (!asked_.exchange(true)) firstAsk_.set_value();
    released_.wait();
    return false;
  }
  void waitUntilAsked() {
    ASSERT_EQ(firstAsk_.get_future().wait_for(kTestPatience), std::future_status::ready);
  }
  void release() { release_.set_value(); }

 private:
  std::atomic<bool> asked_{false};
  std::promise<void> firstAsk_;
  std::promise<void> release_;
  std::shared_future<void> released_ = release_.get_future().share();
};

// A call that waited for either would never return, and the test would end at its time-out.
TEST(UnansweredCallsTest, ReturnWhileNeitherDiskNorServerAnswers) {
  RealWorld world;
  world.server.setFaults(R"([{"path": "*", "hang": true}])");
  const auto documents = std::make_shared<SilentDocuments>();
  VerdictInbox inbox;
  {
    QuorvanceManager manager(world.platformWith(documents));
    EXPECT_TRUE(manager.setupWithServerUrl(world.server.url(), "anna"));
    manager.arriveToCheckPoint(General());
    documents->waitUntilAsked();
    ASSERT_TRUE(world.server.waitForAppliedFaults(2, kTestPatience));
    manager.initializeDeviceId();
    // The state is written on the lane that hangs.
    manager.getRiskForCheckPoint(Login(std::make_shared<User>(User{.userId = "bea"})),
                                 inbox.completion());
    manager.arriveToCheckPoint(Launch());
    manager.updateCheckPointStatus(CheckPointType::LOGIN, "r", CheckPointStatus::APPROVED, {});
    manager.startNewScreenListener(ScreenListenerType::GENERAL, 1, nullptr);
    manager.sendDataWithNewSession();
    manager.logout();
    EXPECT_EQ(manager.userId(), std::nullopt);
    documents->release();
    world.server.goDown();
    EXPECT_EQ(inbox.wait(1).size(), 1U);
  }
}

}  // namespace
}  // namespace quorvance
