#include "platform/linux/threads/library_thread.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <future>
#include <string>

#include "platform/testing/forked_child_test_support.h"

namespace quorvance {
namespace {

struct ThreadSight {
  std::string name;
  sigset_t blocked = {};
  stack_t alternateStack = {};
};

ThreadSight lookAtThread() {
  ThreadSight sight;
  std::array<char, 16> name = {};
  pthread_getname_np(pthread_self(), name.data(), name.size());
  sight.name = name.data();
  pthread_sigmask(SIG_SETMASK, nullptr, &sight.blocked);
  sigaltstack(nullptr, &sight.alternateStack);
  return sight;
}

TEST(LibraryThreadTest, BlocksAsynchronousSignalsButNoFaultAndLeavesItsStartersMask) {
  const ThreadSight before = lookAtThread();
  ThreadSight sight;
  LibraryThread thread;
  EXPECT_TRUE(thread.start("qv-test", [&] { sight = lookAtThread(); }));
  thread.finish();
  EXPECT_EQ(sight.name, "qv-test");
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGSYS, SIGTRAP}) {
    EXPECT_EQ(sigismember(&sight.blocked, fault), 0) << fault;
  }
  for (const int other : {SIGTERM, SIGINT, SIGPIPE, SIGCHLD, SIGALRM, SIGUSR1, SIGPROF, SIGRTMIN}) {
    EXPECT_EQ(sigismember(&sight.blocked, other), 1) << other;
  }
  const ThreadSight after = lookAtThread();
  for (int signal = 1; signal < SIGRTMAX; ++signal) {
    EXPECT_EQ(sigismember(&before.blocked, signal), sigismember(&after.blocked, signal)) << signal;
  }
}

TEST(LibraryThreadTest, KeepsItsAlternateStackPastTheHostsThreadLocalObjects) {
  struct Witness {
    std::promise<stack_t>* seen;
    ~Witness() { seen->set_value(lookAtThread().alternateStack); }
  };
  std::promise<stack_t> seen;
  LibraryThread thread;
  ASSERT_TRUE(thread.start("qv-test", [&] {
    thread_local const Witness witness{&seen};
    static_cast<void>(witness);
  }));
  const stack_t atEnd = seen.get_future().get();
  EXPECT_EQ(atEnd.ss_flags & SS_DISABLE, 0);
  EXPECT_GE(atEnd.ss_size, 64U * 1024);
  EXPECT_GE(atEnd.ss_size, static_cast<std::size_t>(sysconf(_SC_SIGSTKSZ)));
}

TEST(LibraryThreadTest, IsLetGoInAForkedChild) {
  std::promise<void> mayEnd;
  LibraryThread thread;
  ASSERT_TRUE(thread.start("qv-test", [end = mayEnd.get_future().share()] { end.wait(); }));
  // Waiting for a thread that the child does not have would never end.
  EXPECT_TRUE(childEndsWell([&] { thread.finish(); }));
  mayEnd.set_value();
}

}  // namespace
}  // namespace quorvance
