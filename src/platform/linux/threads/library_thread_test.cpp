#include "platform/linux/threads/library_thread.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <future>
#include <memory>
#include <string>

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

ThreadSight sightOfLibraryThread() {
  ThreadSight sight;
  LibraryThread thread;
  EXPECT_TRUE(thread.start("qv-test", [&] { sight = lookAtThread(); }));
  thread.finish();
  return sight;
}

TEST(LibraryThreadTest, BlocksAsynchronousSignalsButNoFault) {
  const ThreadSight sight = sightOfLibraryThread();
  EXPECT_EQ(sight.name, "qv-test");
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGSYS, SIGTRAP}) {
    EXPECT_EQ(sigismember(&sight.blocked, fault), 0) << fault;
  }
  for (const int other : {SIGTERM, SIGINT, SIGPIPE, SIGCHLD, SIGALRM, SIGUSR1, SIGPROF, SIGRTMIN}) {
    EXPECT_EQ(sigismember(&sight.blocked, other), 1) << other;
  }
}

TEST(LibraryThreadTest, LeavesTheStartersSignalMaskAsItWas) {
  sigset_t before;
  sigset_t after;
  pthread_sigmask(SIG_SETMASK, nullptr, &before);
  sightOfLibraryThread();
  pthread_sigmask(SIG_SETMASK, nullptr, &after);
  for (int signal = 1; signal < SIGRTMAX; ++signal) {
    EXPECT_EQ(sigismember(&before, signal), sigismember(&after, signal)) << signal;
  }
}

TEST(LibraryThreadTest, HasAnAlternateStackLargeEnoughForAHandler) {
  const ThreadSight sight = sightOfLibraryThread();
  EXPECT_EQ(sight.alternateStack.ss_flags & SS_DISABLE, 0);
  EXPECT_GE(sight.alternateStack.ss_size, 64U * 1024);
  EXPECT_GE(sight.alternateStack.ss_size, static_cast<std::size_t>(sysconf(_SC_SIGSTKSZ)));
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
}

TEST(LibraryThreadTest, DestroyedOnItselfRunsOn) {
  auto thread = std::make_unique<LibraryThread>();
  std::promise<void> mayGo;
  std::promise<bool> done;
  thread->start("qv-test", [&, go = mayGo.get_future().share()] {
    go.wait();
    const bool isCurrent = thread->isCurrent();
    thread.reset();
    done.set_value(isCurrent);
  });
  EXPECT_FALSE(thread->isCurrent());
  mayGo.set_value();
  EXPECT_TRUE(done.get_future().get());
}

TEST(LibraryThreadTest, IsLetGoInAForkedChild) {
  std::promise<void> mayEnd;
  LibraryThread thread;
  ASSERT_TRUE(thread.start("qv-test", [end = mayEnd.get_future().share()] { end.wait(); }));
  const pid_t child = fork();
  if (child == 0) {
    thread.finish();  // waiting for a thread that the child does not have would never end
    _exit(7);
  }
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  mayEnd.set_value();
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 7);
}

}  // namespace
}  // namespace quorvance
