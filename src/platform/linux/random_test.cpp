#include "base/random.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <set>
#include <string>
#include <thread>

#include "base/uuid.h"
#include "platform/testing/forked_child_test_support.h"

namespace quorvance {
namespace {

// Several at a time are asked of the kernel.
TEST(RandomTest, ForksAndThreadsNeverGiveTheSame) {
  constexpr int kEach = 100;
  constexpr std::size_t kSize = 36;
  randomUuid();
  int ends[2] = {};
  ASSERT_EQ(pipe(ends), 0);
  const auto writeSome = [&] {
    for (int i = 0; i < kEach; ++i) {
      const std::string uuid = randomUuid();
      EXPECT_EQ(write(ends[1], uuid.data(), kSize), static_cast<ssize_t>(kSize));
    }
  };
  EXPECT_TRUE(childEndsWell(writeSome));
  EXPECT_TRUE(childEndsWell(writeSome));
  std::thread(writeSome).join();
  writeSome();
  std::set<std::string> seen;
  for (int i = 0; i < 4 * kEach; ++i) {
    std::string uuid(kSize, ' ');
    ASSERT_EQ(read(ends[0], uuid.data(), kSize), static_cast<ssize_t>(kSize));
    EXPECT_TRUE(seen.insert(uuid).second) << uuid;
  }
  close(ends[0]);
  close(ends[1]);
}

}  // namespace
}  // namespace quorvance
