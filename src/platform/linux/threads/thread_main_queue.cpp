#include "platform/linux/threads/thread_main_queue.h"

#include <condition_variable>
#include <mutex>
#include <utility>

#include "base/forked_child.h"
#include "base/out_of_memory.h"
#include "platform/linux/threads/library_thread.h"
#include "platform/linux/threads/timed_queue.h"

namespace quorvance {

class ThreadMainQueue::State : public TimedQueue, public ThreadSeeker {
 public:
  explicit State(std::shared_ptr<ThreadRetries> retries) : retries_(std::move(retries)) {}

  void seekThread() noexcept override {
    const std::lock_guard lock(mutex_);
    if (!isStopped_ && tasks_.nextDue()) onNewFirst();
  }
  void end() noexcept {
    stop();
    thread_.finish();  // not started any more
  }

 private:
  void onNewFirst() noexcept override;
  void onTaskEnd() noexcept override { retries_->retry(); }
  void run();

  const std::shared_ptr<ThreadRetries> retries_;
  std::condition_variable changed_;
  LibraryThread thread_;
};

void ThreadMainQueue::State::onNewFirst() noexcept {
  changed_.notify_one();
  if (isStopped_ || thread_.isStarted()) return;
  hasMemoryFor([&] {
    auto self = std::static_pointer_cast<State>(shared_from_this());
    static_cast<void>(thread_.start("qv-main", [self = std::move(self)] { self->run(); }));
  });
  if (!thread_.isStarted()) retries_->noteRefusalOfTimers();
}

void ThreadMainQueue::State::run() {
  std::unique_lock lock(mutex_);
  while (!isStopped_) {
    if (runDue(lock, Clock::now(), tasks_.ticket())) continue;
    if (const auto due = tasks_.nextDue()) {
      changed_.wait_until(lock, *due);
    } else {
      changed_.wait(lock);
    }
  }
}

ThreadMainQueue::ThreadMainQueue(std::shared_ptr<ThreadRetries> retries)
    : state_(std::make_shared<State>(retries)), retries_(std::move(retries)) {
  retries_->join(state_);
}

ThreadMainQueue::~ThreadMainQueue() {
  if (!leakInForkedChild(state_)) state_->end();
}

void ThreadMainQueue::post(Task task) { postAfter({}, std::move(task)); }

void ThreadMainQueue::postAfter(std::chrono::milliseconds delay, Task task) {
  state_->post(delay, std::move(task));
  retries_->retry();
}

std::shared_ptr<PreparedTask> ThreadMainQueue::prepare(PreparedTask::Body body) {
  return state_->prepare(std::move(body));
}

}  // namespace quorvance
