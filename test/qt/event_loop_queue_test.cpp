#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include "quorvance/qt/event_loop_queue.h"

namespace quorvance::qt {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;

TEST(EventLoopQueueTest, RunsOnTheApplicationsThreadInOrder) {
  EventLoopQueue queue;
  QEventLoop loop;
  std::string log;
  std::thread poster([&] {
    queue.postAfter(milliseconds(20), [&] { log += "c"; });
    queue.postAfter(milliseconds(30), [&] { loop.quit(); });
    queue.post([&] { log += QThread::currentThread() == loop.thread() ? "a" : "another thread"; });
    queue.post([&] { log += "b"; });
  });
  poster.join();
  EXPECT_EQ(log, "");
  loop.exec();
  EXPECT_EQ(log, "abc");
}

TEST(EventLoopQueueTest, PreparedTasksRunAgain) {
  EventLoopQueue queue;
  QEventLoop loop;
  int runs = 0;
  std::shared_ptr<PreparedTask> task;
  task = queue.prepare(
      [&](const PreparedTask::Owner&) { ++runs < 3 ? task->start({}) : loop.quit(); });
  task->start({});
  loop.exec();
  EXPECT_EQ(runs, 3);
}

struct ToldOfItsEnd {
  explicit ToldOfItsEnd(std::atomic<bool>& ended) : isGone(ended) {}
  ~ToldOfItsEnd() { isGone = true; }
  ToldOfItsEnd(const ToldOfItsEnd&) = delete;
  ToldOfItsEnd& operator=(const ToldOfItsEnd&) = delete;
  std::atomic<bool>& isGone;
};

// Ended by another thread and made by another thread: both happen when a manager is dropped by its
// last task.
TEST(EventLoopQueueTest, DropsWhatWaitsWhicheverThreadEndsIt) {
  for (const bool isMadeHere : {true, false}) {
    std::atomic<bool> isGone = false;
    std::unique_ptr<EventLoopQueue> queue;
    if (isMadeHere) queue = std::make_unique<EventLoopQueue>();
    std::thread([&] {
      if (!queue) queue = std::make_unique<EventLoopQueue>();
      queue->postAfter(hours(1), [held = std::make_shared<ToldOfItsEnd>(isGone)] {});
      queue->post(
          [held = std::make_shared<ToldOfItsEnd>(isGone)] { ADD_FAILURE() << "its queue ended"; });
      queue.reset();
    }).join();
    while (!isGone) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
}

TEST(EventLoopQueueTest, ATaskMayEndItsQueue) {
  auto queue = std::make_shared<EventLoopQueue>();
  QEventLoop loop;
  queue->post([&] {
    queue.reset();
    loop.quit();
  });
  loop.exec();
  QCoreApplication::processEvents();
  EXPECT_EQ(queue, nullptr);
}

}  // namespace
}  // namespace quorvance::qt
