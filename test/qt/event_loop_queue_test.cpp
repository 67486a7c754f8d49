#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
#include <QTimer>
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

struct ToldOfItsEnd {
  explicit ToldOfItsEnd(std::atomic<bool>& ended) : isGone(ended) {}
  ~ToldOfItsEnd() { isGone = true; }
  ToldOfItsEnd(const ToldOfItsEnd&) = delete;
  ToldOfItsEnd& operator=(const ToldOfItsEnd&) = delete;
  std::atomic<bool>& isGone;
};

// A manager is often dropped by its last task, on whatever thread.
TEST(EventLoopQueueTest, DropsWhatWaitsWhicheverThreadEndsIt) {
  for (const bool isMadeHere : {true, false}) {
    for (const bool isDue : {true, false}) {
      std::atomic<bool> isGone = false;
      std::unique_ptr<EventLoopQueue> queue;
      if (isMadeHere) queue = std::make_unique<EventLoopQueue>();
      std::thread([&] {
        if (!queue) queue = std::make_unique<EventLoopQueue>();
        queue->postAfter(hours(1), [held = std::make_shared<ToldOfItsEnd>(isGone)] {});
        if (isDue) queue->post([] { ADD_FAILURE() << "its queue has ended"; });
        queue.reset();
      }).join();
      QEventLoop loop;
      QTimer::singleShot(0, &loop, [&] {
        while (!isGone) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        loop.quit();
      });
      loop.exec();
    }
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
