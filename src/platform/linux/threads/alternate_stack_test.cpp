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

void useSignalStack(std::vector<std::byte>& memory) {
  stack_t stack = {};
  stack.ss_sp = memory.data();
  stack.ss_size = memory.size();
  ASSERT_EQ(sigaltstack(&stack, nullptr), 0);
}

void onNewThread(void (*body)()) { std::thread(body).join(); }

void leaveWithoutSignalStack() {
  stack_t none = {};
  none.ss_flags = SS_DISABLE;
  sigaltstack(&none, nullptr);
}

TEST(AlternateStackTest, ThreadWithoutOneGetsOneOnce) {
  onNewThread([] {
    const stack_t before = presentSignalStack();
    leaveWithoutSignalStack();
    ensureAlternateStack();
    const stack_t first = presentSignalStack();
    EXPECT_EQ(first.ss_flags & SS_DISABLE, 0);
    EXPECT_GE(first.ss_size, kOwnStackBytes);
    ensureAlternateStack();
    EXPECT_EQ(presentSignalStack().ss_sp, first.ss_sp);
    // A sanitizer looks for its own at the end of the thread.
    if ((before.ss_flags & SS_DISABLE) == 0) sigaltstack(&before, nullptr);
  });
}

TEST(AlternateStackTest, LargeEnoughOneIsKeptAndASmallOneIsNot) {
  onNewThread([] {
    const stack_t before = presentSignalStack();
    std::vector<std::byte> large(kOwnStackBytes);
    useSignalStack(large);
    ensureAlternateStack();
    EXPECT_EQ(presentSignalStack().ss_sp, large.data());
    sigaltstack(&before, nullptr);
  });
  onNewThread([] {
    const stack_t before = presentSignalStack();
    std::vector<std::byte> small(16UL * 1024);
    useSignalStack(small);
    ensureAlternateStack();
    EXPECT_NE(presentSignalStack().ss_sp, small.data());
    sigaltstack(&before, nullptr);
  });
}

}  // namespace
}  // namespace quorvance
