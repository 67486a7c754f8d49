#include "quorvance/platform/queues.h"

#include <atomic>
#include <utility>

#include "base/out_of_memory.h"
#include "quorvance/platform/http.h"

namespace quorvance {
namespace {

/// Posts when it is started, for queues that prepare nothing.
class PostedTask : public PreparedTask, public std::enable_shared_from_this<PostedTask> {
 public:
  using Post = std::function<void(std::chrono::milliseconds delay, Task task)>;

  PostedTask(Post post, Body body) : post_(std::move(post)), body_(std::move(body)) {}

  void start(Owner owner, std::chrono::milliseconds delay) noexcept override {
    if (isWaiting_.exchange(true)) return;
    // Dropped, for want of memory too, it may be started again.
    const auto endsWaiting = [this](void*) { isWaiting_ = false; };
    hasMemoryFor([&] {
      std::shared_ptr<void> waiting(this, endsWaiting);
      post_(delay, [self = shared_from_this(), owner = std::move(owner),
                    waiting = std::move(waiting)]() mutable {
        waiting.reset();
        hasMemoryFor([&] { self->body_(owner); });
      });
    });
  }

 private:
  const Post post_;
  const Body body_;
  std::atomic<bool> isWaiting_{false};
};

template <class Post>
std::shared_ptr<PreparedTask> postedTask(Post post, PreparedTask::Body body) {
  std::shared_ptr<PreparedTask> prepared;
  hasMemoryFor([&] { prepared = std::make_shared<PostedTask>(std::move(post), std::move(body)); });
  return prepared;
}

}  // namespace

bool HttpSession::dispatchAfter(std::chrono::milliseconds /*delay*/, Task /*task*/) {
  return false;
}

std::shared_ptr<PreparedTask> MainQueue::prepare(PreparedTask::Body body) {
  return postedTask(
      [this](std::chrono::milliseconds delay, Task posted) { postAfter(delay, std::move(posted)); },
      std::move(body));
}

std::shared_ptr<PreparedTask> BackgroundQueue::prepare(WorkLane lane, PreparedTask::Body body) {
  return postedTask(
      [this, lane](std::chrono::milliseconds, Task posted) { post(lane, std::move(posted)); },
      std::move(body));
}

}  // namespace quorvance
