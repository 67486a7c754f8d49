#include "platform/linux/threads/watch_thread.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <future>
#include <new>
#include <utility>

namespace quorvance {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kTimeout{20};

/// Waits for an event or a time and says which thread ran it, and which destroyed it.
class OneWatch : public Watch {
 public:
  explicit OneWatch(std::optional<Clock::time_point> deadline = {}) : deadline_(deadline) {}
  ~OneWatch() override {
    dropped->set_value();
    close(event_);
  }
  Need need() override { return {event_, POLLIN, deadline_}; }
  bool run() override {
    ran.set_value(Clock::now());
    return false;
  }
  void happen() const {
    const std::uint64_t one = 1;
    EXPECT_EQ(write(event_, &one, sizeof one), static_cast<ssize_t>(sizeof one));
  }

  std::promise<Clock::time_point> ran;
  // Outlives the watch in the test's hands.
  const std::shared_ptr<std::promise<void>> dropped = std::make_shared<std::promise<void>>();

 private:
  const int event_ = eventfd(0, EFD_CLOEXEC);
  const std::optional<Clock::time_point> deadline_;
};

template <class Value>
bool isReadyInTime(std::future<Value>& future) {
  return future.wait_for(kTimeout) == std::future_status::ready;
}

TEST(WatchThreadTest, RunsAWatchWhenItsEventOrItsTimeHasComeAndDropsItThere) {
  WatchThread thread;
  for (const bool isTimed : {false, true}) {
    const auto due = Clock::now() + std::chrono::milliseconds(20);
    auto watch = std::make_shared<OneWatch>(isTimed ? std::optional(due) : std::nullopt);
    auto ran = watch->ran.get_future();
    const auto promise = watch->dropped;
    auto dropped = promise->get_future();
    thread.add(watch);
    if (!isTimed) watch->happen();
    watch.reset();
    ASSERT_TRUE(isReadyInTime(ran));
    EXPECT_TRUE(isReadyInTime(dropped)) << "a thread without watches ends, and starts anew";
    EXPECT_TRUE(!isTimed || ran.get() >= due);
  }
}

TEST(WatchThreadTest, GoesWithItsOwnerAndWaitsForNothing) {
  auto watch = std::make_shared<OneWatch>();
  const auto promise = watch->dropped;
  auto dropped = promise->get_future();
  std::promise<void> released;
  std::promise<void> entered;
  {
    WatchThread thread;
    thread.add(std::move(watch));
    thread.post([&entered, future = released.get_future().share()] {
      entered.set_value();
      future.wait();
    });
    entered.get_future().wait();
  }
  released.set_value();
  EXPECT_TRUE(isReadyInTime(dropped));
}

TEST(WatchThreadTest, AWatchThatFindsNoMemoryGoesOn) {
  class Starved : public OneWatch {
   public:
    using OneWatch::OneWatch;
    bool run() override {
      if (!std::exchange(hasThrown_, true)) throw std::bad_alloc();
      return OneWatch::run();
    }

   private:
    bool hasThrown_ = false;
  };
  WatchThread thread;
  auto watch = std::make_shared<Starved>(Clock::now());
  auto ran = watch->ran.get_future();
  thread.post([] { throw std::bad_alloc(); });
  thread.add(std::move(watch));
  EXPECT_TRUE(isReadyInTime(ran));
}

}  // namespace
}  // namespace quorvance
