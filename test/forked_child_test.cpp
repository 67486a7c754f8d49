#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "platform/testing/test_world.h"
#include "quorvance/account_check_points.h"
#include "quorvance/quorvance_manager.h"

namespace quorvance {
namespace {

// The child has no thread of the library and may have been born while another one held its locks.
TEST(ForkedChildTest, EveryOperationReturnsAtOnceAndDoesNothing) {
  // The process's context keeps the platform for ever, and takes it once: not in a repetition.
  static auto* const world = new TestWorld();
  static_cast<void>(QuorvanceManager::usePlatform(world->platform()));
  const auto manager = QuorvanceManager::shared();
  std::atomic<bool> isOver{false};
  std::thread busy([&] {
    while (!isOver) {
      QuorvanceManager::shared()->setUserId("u");
      QuorvanceManager::setShared(manager);
    }
  });
  for (int i = 0; i < 20; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(5);  // a hang ends the child by a signal
      const auto inherited = QuorvanceManager::shared();
      bool isIdle = !inherited->setupWithServerUrl("http://risk.test/", "u");
      inherited->getRiskForCheckPoint(Launch(), [](Risk, std::string, std::string) { _exit(3); });
      manager->logout();
      manager->setLogoutEventNow(true);
      isIdle = isIdle && !manager->logoutEventNow() && !manager->getSessionId();
      isIdle = isIdle && !QuorvanceManager().getDeviceId();
      isIdle = isIdle && !QuorvanceManager::usePlatform({});
      QuorvanceManager::setShared(nullptr);
      QuorvanceManager::log("nothing");
      _exit(isIdle ? 0 : 4);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status)) << "signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 0);
  }
  isOver = true;
  busy.join();
}

}  // namespace
}  // namespace quorvance
