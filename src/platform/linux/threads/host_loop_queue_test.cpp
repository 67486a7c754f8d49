#include <gtest/gtest.h>
#include <poll.h>

#include <memory>
#include <string>
#include <thread>

#include "quorvance/platform/host_loop_queue.h"

namespace quorvance {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;

constexpr int kForEver = -1;

bool isReadable(const HostLoopQueue& queue, int timeoutMs = 0) {
  pollfd watched = {queue.descriptor(), POLLIN, 0};
  return poll(&watched, 1, timeoutMs) == 1;
}

TEST(HostLoopQueueTest, IsReadableExactlyWhileSomethingIsDue) {
  HostLoopQueue queue;
  std::string log;
  EXPECT_FALSE(isReadable(queue));
  queue.postAfter(hours(1), [&] { log += "z"; });
  EXPECT_FALSE(isReadable(queue));
  queue.post([&] { log += "a"; });
  queue.post([&] { log += "b"; });
  EXPECT_TRUE(isReadable(queue, kForEver));
  queue.dispatch();
  EXPECT_EQ(log, "ab");
  EXPECT_FALSE(isReadable(queue));
}

TEST(HostLoopQueueTest, TimersWakeTheLoopInTheirOrder) {
  HostLoopQueue queue;
  std::string log;
  const auto start = std::chrono::steady_clock::now();
  queue.postAfter(milliseconds(300), [&] { log += "b"; });
  queue.postAfter(milliseconds(5), [&] { log += "a"; });
  while (log.size() < 2) {
    ASSERT_TRUE(isReadable(queue, kForEver));
    queue.dispatch();
  }
  EXPECT_EQ(log, "ab");
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(300));
}

TEST(HostLoopQueueTest, LeavesWhatItsTasksPostForTheNextCall) {
  HostLoopQueue queue;
  std::string log;
  queue.post([&] {
    log += "a";
    queue.post([&] { log += "c"; });
  });
  queue.post([&] { log += "b"; });
  queue.dispatch();
  EXPECT_EQ(log, "ab");
  EXPECT_TRUE(isReadable(queue, kForEver));
  queue.dispatch();
  EXPECT_EQ(log, "abc");
}

TEST(HostLoopQueueTest, ANestedDispatchKeepsTheOrder) {
  HostLoopQueue queue;
  std::string log;
  queue.post([&] {
    log += "a";
    queue.dispatch();
    log += "c";
  });
  queue.post([&] { log += "b"; });
  queue.dispatch();
  EXPECT_EQ(log, "abc");
}

TEST(HostLoopQueueTest, TakesPostsFromOtherThreads) {
  constexpr int kPosts = 1000;
  HostLoopQueue queue;
  int count = 0;
  const std::jthread poster([&] {
    for (int i = 0; i < kPosts; ++i) queue.post([&] { ++count; });
  });
  for (; count < kPosts; queue.dispatch()) ASSERT_TRUE(isReadable(queue, kForEver));
}

TEST(HostLoopQueueTest, DestroyedByItsOwnTaskDropsTheRest) {
  auto queue = std::make_unique<HostLoopQueue>();
  auto held = std::make_shared<int>(0);
  const std::weak_ptr<int> seen = held;
  queue->post([&] { queue.reset(); });
  queue->post([kept = std::move(held)] { FAIL() << "the queue is gone"; });
  queue->dispatch();
  EXPECT_EQ(queue, nullptr);
  EXPECT_TRUE(seen.expired());
}

}  // namespace
}  // namespace quorvance
