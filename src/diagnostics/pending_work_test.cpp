#include "diagnostics/pending_work.h"

#include <gtest/gtest.h>

#include <future>

namespace quorvance {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

TEST(PendingWorkTest, AWaitEndsWithWhatWasThereHoweverMuchComesMeanwhile) {
  const auto work = std::make_shared<PendingWork>();
  EXPECT_TRUE(work->waitForPresent(Clock::now()));
  PendingWork::Mark running = work->begin();
  std::future<bool> waits[] = {
      std::async(std::launch::async, [&] { return work->waitForPresent(Clock::now() + 30s); }),
      std::async(std::launch::async, [&] { return work->waitForPresent(Clock::now() + 30s); })};
  // Something is pending at every moment.
  for (const auto& wait : waits) {
    while (wait.wait_for(0s) != std::future_status::ready) running = work->begin();
  }
  EXPECT_TRUE(waits[0].get());
  EXPECT_TRUE(waits[1].get());
  EXPECT_EQ(work->count(), 1U);
}

TEST(PendingWorkTest, WhatFollowsFromWorkIsWaitedForWithIt) {
  const auto work = std::make_shared<PendingWork>();
  PendingWork::Mark first = work->begin();
  EXPECT_FALSE(work->waitForPresent(Clock::now()));
  const PendingWork::Mark later = work->begin();
  auto follows = std::make_unique<PendingWork::Mark>(first);
  first = {};
  auto wait = std::async(std::launch::async, [&] {
    // Closes one more period, and waits for those before it.
    return work->waitForPresent(Clock::now() + 1ms);
  });
  EXPECT_FALSE(wait.get());
  EXPECT_EQ(work->count(), 2U);
  follows.reset();
  EXPECT_FALSE(work->waitForPresent(Clock::now()));
  EXPECT_EQ(work->count(), 1U);
}

}  // namespace
}  // namespace quorvance
