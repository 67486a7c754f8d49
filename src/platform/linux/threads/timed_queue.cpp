#include "platform/linux/threads/timed_queue.h"

#include <utility>

#include "base/out_of_memory.h"

namespace quorvance {

/// Has its node while it does not wait.
class TimedQueue::Prepared : public PreparedTask, public std::enable_shared_from_this<Prepared> {
 public:
  Prepared(std::weak_ptr<TimedQueue> queue, Body body)
      : weakQueue_(std::move(queue)), body_(std::move(body)), node_(TimedTasks::makeNode({})) {}

  void start(Owner owner, std::chrono::milliseconds delay) noexcept override {
    const std::shared_ptr<TimedQueue> queue = weakQueue_.lock();
    if (!queue) return;
    const std::lock_guard lock(queue->mutex_);
    if (queue->isStopped_ || node_.empty()) return;
    node_.mapped().prepared = shared_from_this();
    node_.mapped().owner = std::move(owner);
    queue->add(delay, std::move(node_));
  }

  /// Under the queue's mutex.
  void takeBack(TimedTasks::Node node) noexcept { node_ = std::move(node); }
  void run(const Owner& owner) const { body_(owner); }

 private:
  const std::weak_ptr<TimedQueue> weakQueue_;
  const Body body_;
  TimedTasks::Node node_;
};

void TimedQueue::post(std::chrono::milliseconds delay, Task task) noexcept {
  if (!task) return;
  TimedTasks::Node node;
  if (!hasMemoryFor([&] { node = TimedTasks::makeNode({std::move(task), {}, {}}); })) return;
  const std::lock_guard lock(mutex_);
  if (!isStopped_) add(delay, std::move(node));
}

// Under the mutex.
void TimedQueue::add(std::chrono::milliseconds delay, TimedTasks::Node node) noexcept {
  const auto before = tasks_.nextDue();
  tasks_.add(Clock::now(), delay, std::move(node));
  if (tasks_.nextDue() != before) onNewFirst();
}

std::shared_ptr<PreparedTask> TimedQueue::prepare(PreparedTask::Body body) noexcept {
  std::shared_ptr<PreparedTask> prepared;
  hasMemoryFor([&] { prepared = std::make_shared<Prepared>(weak_from_this(), std::move(body)); });
  return prepared;
}

void TimedQueue::stop() noexcept {
  TimedTasks dropped;  // outside of the lock
  const std::lock_guard lock(mutex_);
  isStopped_ = true;
  std::swap(dropped, tasks_);
  onNewFirst();
}

bool TimedQueue::runDue(std::unique_lock<std::mutex>& lock, Clock::time_point now,
                        std::uint64_t ticket) {
  TimedTasks::Node node = tasks_.takeDue(now, ticket);
  if (node.empty()) return false;
  TimedTasks::Item item = std::move(node.mapped());
  auto prepared = std::static_pointer_cast<Prepared>(std::move(item.prepared));
  if (prepared) prepared->takeBack(std::move(node));  // it may be started again
  lock.unlock();
  hasMemoryFor([&] { prepared ? prepared->run(item.owner) : item.task(); });
  // What they hold may call back into the queue.
  item = {};
  prepared.reset();
  node = {};
  onTaskEnd();
  lock.lock();
  return true;
}

}  // namespace quorvance
