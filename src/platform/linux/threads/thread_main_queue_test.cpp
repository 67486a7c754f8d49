#include "platform/linux/threads/thread_main_queue.h"

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <string>
#include <thread>

#include "platform/linux/threads/thread_signals_test_support.h"

namespace quorvance {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;

TEST(ThreadMainQueueTest, RunsInTheOrderOfTimesThenOfPostingAndNeverInsideTheCall) {
  ThreadMainQueue queue;
  std::string log;
  std::promise<void> done;
  const auto start = std::chrono::steady_clock::now();
  // From one task, so that all of them count from nearly the same moment.
  queue.post([&, poster = std::this_thread::get_id()] {
    EXPECT_NE(std::this_thread::get_id(), poster);
    queue.postAfter(milliseconds(300), [&] {
      log += "f";
      done.set_value();
    });
    queue.postAfter(milliseconds(100), [&] { log += "d"; });
    queue.postAfter(milliseconds(100), [&] { log += "e"; });
    queue.post([&] { log += "b"; });
    queue.post([&] { log += "c"; });
    log += "a";
  });
  done.get_future().wait();
  EXPECT_EQ(log, "abcdef");
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(300));
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
