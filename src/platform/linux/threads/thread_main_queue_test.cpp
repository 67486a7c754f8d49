#include "platform/linux/threads/thread_main_queue.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <numeric>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/threads/thread_signals_test_support.h"

namespace quorvance {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;

TEST(ThreadMainQueueTest, RunsInOrderOnOneThreadThatIsNotTheCallers) {
  constexpr int kTasks = 100;
  ThreadMainQueue queue;
  std::vector<int> order;
  std::set<std::thread::id> threads;
  std::promise<void> done;
  for (int i = 0; i < kTasks; ++i) {
    queue.post([&, i] {
      order.push_back(i);
      threads.insert(std::this_thread::get_id());
    });
  }
  queue.post([&] { done.set_value(); });
  done.get_future().wait();
  std::vector<int> expected(kTasks);
  std::iota(expected.begin(), expected.end(), 0);
  EXPECT_EQ(order, expected);
  EXPECT_EQ(threads.size(), 1U);
  EXPECT_EQ(threads.count(std::this_thread::get_id()), 0U);
}

TEST(ThreadMainQueueTest, ATaskNeverRunsInsideTheCallThatPostsIt) {
  ThreadMainQueue queue;
  std::string log;
  std::promise<void> done;
  queue.post([&] {
    queue.post([&] {
      log += "b";
      done.set_value();
    });
    log += "a";
  });
  done.get_future().wait();
  EXPECT_EQ(log, "ab");
}

TEST(ThreadMainQueueTest, TimersRunInTheOrderOfTheirTimes) {
  ThreadMainQueue queue;
  std::string log;
  std::promise<void> done;
  const auto start = std::chrono::steady_clock::now();
  // Set from one task, so that all of them count from nearly the same moment.
  queue.post([&] {
    queue.postAfter(milliseconds(30), [&] {
      log += "d";
      done.set_value();
    });
    queue.postAfter(milliseconds(1), [&] { log += "b"; });
    queue.postAfter(milliseconds(1), [&] { log += "c"; });
    queue.post([&] { log += "a"; });
  });
  done.get_future().wait();
  EXPECT_EQ(log, "abcd");
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(30));
}

TEST(ThreadMainQueueTest, APostOvertakesALongTimer) {
  ThreadMainQueue queue;
  std::promise<void> sleeping;
  std::promise<void> done;
  queue.postAfter(hours(10), [] { FAIL() << "came far too early"; });
  queue.post([&] { sleeping.set_value(); });
  sleeping.get_future().wait();
  queue.post([&] { done.set_value(); });
  done.get_future().wait();
}

TEST(ThreadMainQueueTest, DestructionDropsWhatWaitsAndWaitsForWhatRuns) {
  auto queue = std::make_unique<ThreadMainQueue>();
  std::promise<void> started;
  std::promise<void> mayEnd;
  bool isEnded = false;
  queue->post([&, end = mayEnd.get_future().share()] {
    started.set_value();
    end.wait();
    isEnded = true;
  });
  started.get_future().wait();
  queue->post([] { FAIL() << "was to be dropped"; });
  queue->postAfter(hours(1), [signal = signalWhenDropped(mayEnd)] { FAIL(); });
  queue.reset();
  EXPECT_TRUE(isEnded);
}

TEST(ThreadMainQueueTest, DestructionWaitsForNoObjectOfTheHosts) {
  SlowThreadLocal slow;
  auto queue = std::make_unique<ThreadMainQueue>();
  std::promise<void> left;
  queue->post([&] {
    slow.leaveOnThread();
    left.set_value();
  });
  left.get_future().wait();
  EXPECT_TRUE(returnsByItself([&] { queue.reset(); }));
}

TEST(ThreadMainQueueTest, DestroyedByItsOwnTaskEndsItsThread) {
  auto queue = std::make_unique<ThreadMainQueue>();
  auto ended = std::make_shared<std::promise<void>>();
  auto future = ended->get_future();
  std::promise<void> mayGo;
  queue->post([&, end = std::move(ended), go = mayGo.get_future().share()] {
    signalAtThreadEnd(std::move(*end));
    go.wait();
    queue->post([] { FAIL() << "the queue is gone"; });
    queue.reset();
  });
  mayGo.set_value();
  future.wait();
  EXPECT_EQ(queue, nullptr);
}

}  // namespace
}  // namespace quorvance
