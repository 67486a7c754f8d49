#include "platform/linux/storage/file_lock.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "platform/linux/storage/json_file_store.h"
#include "platform/testing/manual_executor.h"
#include "platform/testing/temporary_folder_test_support.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;
using LockOutcome = FileLock::Outcome;

std::size_t openDescriptorsOf(const std::string& path) {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (std::filesystem::read_symlink(entry.path(), gone) == path) ++count;
  }
  return count;
}

/// A fork of this process that has done `work` when this one goes on, and then lives until killed.
class LivingFork {
 public:
  template <class Work>
  explicit LivingFork(Work work) {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe(ends.data()), 0);
    process_ = fork();
    if (process_ == 0) {
      work();
      static_cast<void>(write(ends[1], "x", 1) + 1);
      for (;;) pause();
    }
    close(ends[1]);
    char done = 0;
    EXPECT_EQ(read(ends[0], &done, 1), 1);
    close(ends[0]);
  }
  ~LivingFork() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }
  LivingFork(const LivingFork&) = delete;
  LivingFork& operator=(const LivingFork&) = delete;

  void stop() const {
    kill(process_, SIGSTOP);
    waitpid(process_, nullptr, WUNTRACED);
  }

 private:
  pid_t process_ = -1;
};

TEST(FileLockTest, StoppedProcessHoldsUpNobodyForEverAndADeadOneNobody) {
  const TemporaryFolder folder;
  const std::string path = folder.at("lock");
  {
    std::optional<FileLock> lock;
    const LivingFork owner([&] { lock.emplace(path, 0s); });
    owner.stop();
    EXPECT_EQ(FileLock(path, 0s).outcome(), LockOutcome::heldElsewhere);
    EXPECT_EQ(FileLock(path, 50ms).outcome(), LockOutcome::heldElsewhere);
  }
  // The wait that was given up a moment ago may have got the lock, and must give it back.
  EXPECT_EQ(FileLock(path, 30s).outcome(), LockOutcome::held);
  EXPECT_EQ(FileLock(folder.at("no/folder"), 0s).outcome(), LockOutcome::impossible);
}

TEST(FileLockTest, ForkNeitherReleasesNorKeepsTheLockOfItsParent) {
  const TemporaryFolder folder;
  std::optional<FileLock> lock(std::in_place, folder.at("lock"), 0s);
  const LivingFork heir([&] { lock.reset(); });
  const LivingFork keeper([] {});
  EXPECT_EQ(FileLock(folder.at("lock"), 0s).outcome(), LockOutcome::heldElsewhere);
  lock.reset();
  EXPECT_EQ(FileLock(folder.at("lock"), 0s).outcome(), LockOutcome::held);
}

TEST(FileLockTest, StateWaitsForNoStoppedProcessAndIsWrittenLater) {
  const TemporaryFolder folder;
  const auto lane = std::make_shared<ManualExecutor>();
  JsonFileStore store(folder.path(), lane);
  {
    std::optional<FileLock> lock;
    const LivingFork owner([&] { lock.emplace(folder.at("state.lock"), 0s); });
    owner.stop();
    store.write("a", "1");
    lane->run();
    EXPECT_EQ(folder.get("state.json"), "");
  }
  // The wait that the store gave up gets the lock for a moment, and has ended with its descriptor.
  while (openDescriptorsOf(folder.at("state.lock")) > 0) std::this_thread::yield();
  store.write("b", "2");
  lane->run();
  EXPECT_EQ(folder.get("state.json"), R"({"a":"1","b":"2"})");
}

TEST(FileLockTest, WhoeverWaitedForARemovedFileLocksTheNewOne) {
  const TemporaryFolder folder;
  const std::string path = folder.at("lock");
  auto first = std::make_unique<FileLock>(path, 0ms);
  std::promise<void> isHeld;
  std::promise<void> mayEnd;
  std::thread waiter([&] {
    const FileLock second(path, 30s);
    EXPECT_EQ(second.outcome(), FileLock::Outcome::held);
    isHeld.set_value();
    mayEnd.get_future().wait();
  });
  while (openDescriptorsOf(path) < 2) std::this_thread::yield();
  std::filesystem::remove(path);
  first.reset();
  isHeld.get_future().wait();
  EXPECT_EQ(FileLock(path, 0ms).outcome(), FileLock::Outcome::heldElsewhere);
  mayEnd.set_value();
  waiter.join();
}

}  // namespace
}  // namespace quorvance
