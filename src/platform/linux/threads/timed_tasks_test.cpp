#include "platform/linux/threads/timed_tasks.h"

#include <gtest/gtest.h>

#include <string>

namespace quorvance {
namespace {

using std::chrono::milliseconds;
using TimePoint = TimedTasks::Clock::time_point;

class TimedTasksTest : public testing::Test {
 protected:
  void add(milliseconds delay, char name) { tasks_.add(start_, delay, nodeOf(name)); }
  /// The names of what is due, in the order in which it ran.
  std::string runDueAt(TimePoint now) {
    log_.clear();
    while (const auto node = tasks_.takeDue(now)) node.mapped().task();
    return log_;
  }
  TimedTasks::Node nodeOf(char name) {
    return TimedTasks::makeNode({[this, name] { log_ += name; }, {}, {}});
  }

  const TimePoint start_{std::chrono::hours(5)};
  TimedTasks tasks_;
  std::string log_;
};

TEST_F(TimedTasksTest, DelaysBeyondTheClockAreClamped) {
  add(milliseconds::max(), 'b');
  add(milliseconds::min(), 'a');
  EXPECT_EQ(runDueAt(start_), "a");
  ASSERT_TRUE(tasks_.nextDue());
  EXPECT_GT(*tasks_.nextDue(), start_ + std::chrono::hours(24 * 365 * 200));
  EXPECT_EQ(runDueAt(TimePoint::max()), "b");
}

TEST_F(TimedTasksTest, ATicketHidesWhatIsAddedLater) {
  add(milliseconds(0), 'a');
  const auto ticket = tasks_.ticket();
  add(milliseconds(0), 'b');
  ASSERT_TRUE(tasks_.takeDue(start_, ticket));
  EXPECT_FALSE(tasks_.takeDue(start_, ticket));
  EXPECT_EQ(runDueAt(start_), "b");
}

}  // namespace
}  // namespace quorvance
