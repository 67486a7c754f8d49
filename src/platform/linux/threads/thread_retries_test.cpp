
#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>

#include <future>
#include <memory>

#include "platform/linux/threads/thread_signals_test_support.h"
#include "quorvance/platform/host_loop_queue.h"
#include "quorvance/platform/linux_platform.h"

namespace quorvance {
namespace {

/// While it lives the system has no thread to give: none has memory for so large a stack.
class NoThreads {
 public:
  NoThreads() {
    pthread_getattr_default_np(&usual_);
    pthread_attr_t huge = usual_;
    pthread_attr_setstacksize(&huge, std::size_t{1} << 48);
    EXPECT_EQ(pthread_setattr_default_np(&huge), 0);
  }
  ~NoThreads() { pthread_setattr_default_np(&usual_); }
  NoThreads(const NoThreads&) = delete;
  NoThreads& operator=(const NoThreads&) = delete;

 private:
  pthread_attr_t usual_;
};

/// Work of one queue of a platform, asked for while there are no threads.
class RefusedWork {
 public:
  template <class Post>
  explicit RefusedWork(Post post) {
    const NoThreads noThreads;
    post([done = done_] { done->set_value(); });
  }
  bool isDone(std::chrono::milliseconds timeout = kThreadTestPatience) {
    return future_.wait_for(timeout) == std::future_status::ready;
  }

 private:
  std::shared_ptr<std::promise<void>> done_ = std::make_shared<std::promise<void>>();
  std::future<void> future_ = done_->get_future();
};

TEST(ThreadRetriesTest, ATimerOfTheHostsLoopTriesAgain) {
  LinuxPlatformOptions options;
  const auto loop = std::make_shared<HostLoopQueue>();
  options.mainQueue = loop;
  const Platform platform = makeLinuxPlatform(options);
  RefusedWork background(
      [&](const Task& task) { platform.backgroundQueue->post(WorkLane::files, task); });
  EXPECT_FALSE(background.isDone({}));
  pollfd watched = {loop->descriptor(), POLLIN, 0};
  ASSERT_EQ(
      poll(&watched, 1, static_cast<int>(std::chrono::milliseconds(kThreadTestPatience).count())),
      1);
  loop->dispatch();
  EXPECT_TRUE(background.isDone());
}

TEST(ThreadRetriesTest, WhateverRunsTriesAgain) {
  const Platform platform = makeLinuxPlatform();
  RefusedWork main([&](const Task& task) { platform.mainQueue->post(task); });
  // A post, then a task that ends.
  platform.backgroundQueue->post(WorkLane::files, [] {});
  EXPECT_TRUE(main.isDone());
  RefusedWork facts([&](const Task& task) {
    platform.backgroundQueue->post(WorkLane::completions, [] {});
    platform.backgroundQueue->post(WorkLane::facts, task);
  });
  EXPECT_TRUE(facts.isDone());
  RefusedWork network([&](const Task& task) { platform.http->dispatch(task); });
  platform.backgroundQueue->post(WorkLane::files, [] {});
  EXPECT_TRUE(network.isDone());
}

TEST(ThreadRetriesTest, WhatIsWatchedIsToldOnceThereIsAThread) {
  const Platform platform = makeLinuxPlatform();
  std::shared_ptr<void> subscription;
  RefusedWork firstReading([&](const Task& task) {
    subscription = platform.reachability->subscribe([task](NetworkKind) { task(); });
  });
  platform.backgroundQueue->post(WorkLane::files, [] {});
  EXPECT_TRUE(firstReading.isDone());
}

}  // namespace
}  // namespace quorvance
