#include "quorvance/alternate_stack.h"

#include <gmock/gmock.h>
#include <signal.h>

#include <cstddef>
#include <thread>
#include <vector>

namespace quorvance {
namespace {

constexpr std::size_t kOwnStackBytes = 64UL * 1024;

stack_t presentSignalStack() {
  stack_t stack = {};
  sigaltstack(nullptr, &stack);
  return stack;
}

TEST(AlternateStackTest, ThreadKeepsALargeEnoughOneAndElseGetsOneOnce) {
  for (const std::size_t bytes : {std::size_t{0}, kOwnStackBytes / 4, kOwnStackBytes}) {
    std::thread([bytes] {
      std::vector<std::byte> memory(bytes);
      stack_t own = {};
      own.ss_sp = memory.data();
      own.ss_size = bytes;
      own.ss_flags = bytes == 0 ? SS_DISABLE : 0;
      stack_t before = {};
      ASSERT_EQ(sigaltstack(&own, &before), 0);
      ensureAlternateStack();
      const stack_t first = presentSignalStack();
      EXPECT_EQ(first.ss_flags & SS_DISABLE, 0);
      EXPECT_GE(first.ss_size, kOwnStackBytes);
      EXPECT_EQ(first.ss_sp == memory.data(), bytes == kOwnStackBytes);
      ensureAlternateStack();
      EXPECT_EQ(presentSignalStack().ss_sp, first.ss_sp);
      sigaltstack(&before, nullptr);  // a sanitizer looks for its own at the end of the thread
    }).join();
  }
}

}  // namespace
}  // namespace quorvance
