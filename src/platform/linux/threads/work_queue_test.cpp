#include "platform/linux/threads/work_queue.h"

#include <gtest/gtest.h>

#include <array>
#include <future>
#include <memory>
#include <numeric>
#include <vector>

#include "platform/linux/threads/thread_signals_test_support.h"

namespace quorvance {
namespace {

using std::chrono::milliseconds;

/// Tasks that hang until the test is over.
class HangingTasks {
 public:
  ~HangingTasks() { mayEnd_.set_value(); }

  /// Returns when the task runs.
  void hang(WorkQueue& queue, WorkLane lane) {
    std::promise<void> started;
    queue.post(lane, [&started, end = end_] {
      started.set_value();
      end.wait();
    });
    started.get_future().wait();
  }
  void post(WorkQueue& queue, WorkLane lane) {
    queue.post(lane, [end = end_] { end.wait(); });
  }

 private:
  std::promise<void> mayEnd_;
  std::shared_future<void> end_ = mayEnd_.get_future().share();
};

void waitForTask(WorkQueue& queue, WorkLane lane) {
  std::promise<void> done;
  queue.post(lane, [&] { done.set_value(); });
  done.get_future().wait();
}

TEST(WorkQueueTest, AHungTaskOfEachKindHoldsUpNoOtherCompletion) {
  WorkQueue queue;
  HangingTasks hanging;
  hanging.hang(queue, WorkLane::files);
  hanging.hang(queue, WorkLane::facts);
  hanging.hang(queue, WorkLane::images);
  hanging.hang(queue, WorkLane::completions);
  for (int i = 0; i < 100; ++i) waitForTask(queue, WorkLane::completions);
}

TEST(WorkQueueTest, HungCompletionsHoldUpNoLane) {
  WorkQueue queue;
  HangingTasks hanging;
  hanging.hang(queue, WorkLane::completions);
  hanging.hang(queue, WorkLane::completions);
  queue.post(WorkLane::completions, [] {});
  for (int i = 0; i < 10; ++i) {
    waitForTask(queue, WorkLane::facts);
    waitForTask(queue, WorkLane::files);
    waitForTask(queue, WorkLane::images);
  }
}

TEST(WorkQueueTest, LanesRunOneTaskAtATimeInOrder) {
  constexpr int kTasks = 500;
  for (const WorkLane lane : {WorkLane::files, WorkLane::facts, WorkLane::images}) {
    WorkQueue queue;
    std::vector<int> order;  // unguarded: two tasks at a time would be a race
    for (int i = 0; i < kTasks; ++i) {
      queue.post(lane, [&order, i] { order.push_back(i); });
      queue.post(WorkLane::completions, [] {});
    }
    waitForTask(queue, lane);
    std::vector<int> expected(kTasks);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(order, expected);
  }
}

// By threads that are started, then by those that have become idle.
TEST(WorkQueueTest, WhatIsPostedInARowWakesOneThreadWhoWakesTheNext) {
  WorkQueue queue;
  for (int round = 0; round < 2; ++round) {
    HangingTasks hanging;
    std::array<std::promise<void>, 4> ran;
    {
      const HeldWakeUps held(queue.wakeUps());
      hanging.post(queue, WorkLane::completions);
      const WorkLane lanes[] = {WorkLane::files, WorkLane::facts, WorkLane::images,
                                WorkLane::completions};
      for (std::size_t i = 0; i < ran.size(); ++i) {
        queue.post(lanes[i], [&task = ran[i]] { task.set_value(); });
      }
    }
    for (auto& task : ran) {
      ASSERT_EQ(task.get_future().wait_for(kThreadTestPatience), std::future_status::ready);
    }
  }
}

// The host's objects end after the library has done with the thread, and may call it once more.
TEST(WorkQueueTest, WhatTheHostLeavesOnAThreadHoldsUpNoCall) {
  SlowThreadLocal slow;
  std::promise<void> posted;
  auto queue = std::make_unique<WorkQueue>(milliseconds(1));
  queue->post(WorkLane::files, [&] {
    slow.leaveOnThread([&] {
      queue->post(WorkLane::facts, [] {});
      posted.set_value();
    });
  });
  slow.waitForDestruction();
  EXPECT_TRUE(returnsByItself([&] { waitForTask(*queue, WorkLane::files); }));
  slow.release();
  posted.get_future().wait();
  EXPECT_TRUE(returnsByItself([&] { queue.reset(); }));
}

TEST(WorkQueueTest, DestructionWaitsForNoObjectOfTheHosts) {
  SlowThreadLocal slow;
  auto queue = std::make_unique<WorkQueue>(milliseconds(1));
  queue->post(WorkLane::completions, [&] { slow.leaveOnThread(); });
  slow.waitForDestruction();
  EXPECT_TRUE(returnsByItself([&] { queue.reset(); }));
}

TEST(WorkQueueTest, DestructionDropsWhatWaitsAndWaitsForWhatRuns) {
  auto queue = std::make_unique<WorkQueue>();
  std::promise<void> started;
  std::promise<void> mayEnd;
  bool isEnded = false;
  queue->post(WorkLane::facts, [&, end = mayEnd.get_future().share()] {
    started.set_value();
    end.wait();
    isEnded = true;
  });
  started.get_future().wait();
  queue->post(WorkLane::facts,
              [signal = signalWhenDropped(mayEnd)] { FAIL() << "was to be dropped"; });
  queue.reset();
  EXPECT_TRUE(isEnded);
}

TEST(WorkQueueTest, FileLaneIsFinishedAfterTheEndWhichWaitsForNoDisk) {
  auto queue = std::make_unique<WorkQueue>();
  std::promise<void> mayEnd;
  std::promise<int> finished;
  int ran = 0;
  queue->post(WorkLane::files, [end = mayEnd.get_future().share()] { end.wait(); });
  for (int i = 0; i < 10; ++i) queue->post(WorkLane::files, [&] { ++ran; });
  queue->post(WorkLane::files, [&] { finished.set_value(ran); });
  EXPECT_TRUE(returnsByItself([&] { queue.reset(); }));
  mayEnd.set_value();
  auto result = finished.get_future();
  ASSERT_EQ(result.wait_for(kThreadTestPatience), std::future_status::ready);
  EXPECT_EQ(result.get(), 10);
}

TEST(WorkQueueTest, DestroyedByItsOwnTaskWaitsForNothing) {
  HangingTasks hanging;
  auto queue = std::make_unique<WorkQueue>();
  hanging.hang(*queue, WorkLane::completions);
  auto ended = std::make_shared<std::promise<void>>();
  auto threadEnd = ended->get_future();
  std::promise<void> mayGo;
  queue->post(WorkLane::completions, [&, ended, go = mayGo.get_future().share()] {
    signalAtThreadEnd(std::move(*ended));
    go.wait();
    queue.reset();
  });
  mayGo.set_value();
  threadEnd.wait();
  EXPECT_EQ(queue, nullptr);
}

}  // namespace
}  // namespace quorvance
