#include "quorvance/qt/event_loop_queue.h"

#include <QSocketNotifier>
#include <atomic>
#include <mutex>
#include <utility>

#include "qt/application_thread.h"
#include "quorvance/platform/host_loop_queue.h"

namespace quorvance::qt {

/// What the queue and its place in the event loop share. Its life: open until the application
/// object or the queue ends, whichever comes first; what waits is then dropped.
class EventLoopQueue::Loop {
 public:
  /// Null once it is closed.
  std::shared_ptr<HostLoopQueue> queue() const {
    const std::lock_guard lock(mutex_);
    return queue_;
  }

  /// Drops what waits, outside of the lock.
  void close() {
    std::shared_ptr<HostLoopQueue> dropped;
    const std::lock_guard lock(mutex_);
    std::swap(dropped, queue_);
  }

  /// Any thread: the notifier alone may close it, since it watches the queue's descriptor.
  void end() {
    hasEnded_ = true;
    if (const auto open = queue()) open->post([] {});  // wakes the notifier up
  }
  bool hasEnded() const { return hasEnded_; }

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<HostLoopQueue> queue_ = std::make_shared<HostLoopQueue>();
  std::atomic<bool> hasEnded_ = false;
};

namespace {

/// The queue's place in the event loop, on the application's thread; owned by the application
/// object.
template <class Loop>
class LoopNotifier : public QSocketNotifier {
 public:
  LoopNotifier(std::shared_ptr<Loop> loop, int descriptor, QObject* application)
      : QSocketNotifier(descriptor, QSocketNotifier::Read, application), loop_(std::move(loop)) {
    connect(this, &QSocketNotifier::activated, this, [this] { dispatch(); });
  }
  ~LoopNotifier() override {
    setEnabled(false);  // before its descriptor is closed
    loop_->close();
  }
  LoopNotifier(const LoopNotifier&) = delete;
  LoopNotifier& operator=(const LoopNotifier&) = delete;

 private:
  void dispatch() {
    if (loop_->hasEnded()) {
      deleteLater();
    } else if (const auto queue = loop_->queue()) {
      queue->dispatch();
    }
  }

  const std::shared_ptr<Loop> loop_;
};

template <class Loop>
void attach(std::shared_ptr<Loop> loop) {
  const auto queue = loop->queue();
  if (loop->hasEnded() || !queue || queue->descriptor() < 0) return;
  new LoopNotifier<Loop>(std::move(loop), queue->descriptor(), QCoreApplication::instance());
}

}  // namespace

EventLoopQueue::EventLoopQueue() : loop_(std::make_shared<Loop>()) {
  if (isOnApplicationThread()) {
    attach(loop_);
  } else if (QCoreApplication* const application = QCoreApplication::instance()) {
    QMetaObject::invokeMethod(
        application, [loop = loop_] { attach(loop); }, Qt::QueuedConnection);
  } else {
    loop_->close();  // nothing would ever run
  }
}

EventLoopQueue::~EventLoopQueue() { loop_->end(); }

void EventLoopQueue::post(Task task) {
  if (const auto queue = loop_->queue()) queue->post(std::move(task));
}

void EventLoopQueue::postAfter(std::chrono::milliseconds delay, Task task) {
  if (const auto queue = loop_->queue()) queue->postAfter(delay, std::move(task));
}

std::shared_ptr<PreparedTask> EventLoopQueue::prepare(PreparedTask::Body body) {
  const auto queue = loop_->queue();
  return queue ? queue->prepare(std::move(body)) : nullptr;
}

}  // namespace quorvance::qt
