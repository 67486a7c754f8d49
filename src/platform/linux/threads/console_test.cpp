#include "base/console.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "base/debug.h"
#include "platform/linux/threads/thread_signals_test_support.h"

namespace quorvance {
namespace {

/// While it lives, standard output is a pipe that is full and that nobody reads.
class UnreadConsole {
 public:
  UnreadConsole() {
    std::fflush(stdout);
    std::array<int, 2> ends = {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return;
    readEnd_ = ends[0];
    fcntl(ends[1], F_SETFL, O_NONBLOCK);
    while (write(ends[1], "#", 1) == 1) ++filled_;
    fcntl(ends[1], F_SETFL, 0);
    console_ = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    close(ends[1]);
  }
  /// What still waits is written to nobody, and so lost.
  ~UnreadConsole() {
    close(readEnd_);
    dup2(console_, STDOUT_FILENO);
    close(console_);
  }
  UnreadConsole(const UnreadConsole&) = delete;
  UnreadConsole& operator=(const UnreadConsole&) = delete;

  /// The next line; waits for it.
  std::string readLine() {
    for (; filled_ > 0; --filled_) readByte();
    std::string line;
    for (char byte = readByte(); byte != '\n'; byte = readByte()) line += byte;
    return line;
  }

 private:
  char readByte() const {
    char byte = '\n';
    static_cast<void>(!read(readEnd_, &byte, 1));
    return byte;
  }

  int readEnd_ = -1;
  int console_ = -1;
  int filled_ = 0;
};

std::chrono::steady_clock::time_point testDeadline() {
  return std::chrono::steady_clock::now() + kThreadTestPatience;
}

class DebugConsoleTest : public testing::Test {
 protected:
  DebugConsoleTest() { setIsInDebugMode(true); }
  ~DebugConsoleTest() override {
    setIsInDebugMode(false);
    EXPECT_TRUE(flushDebugOutput(testDeadline()));
  }
};

TEST_F(DebugConsoleTest, AnUnreadConsoleHoldsUpNobodyAndLinesKeepTheirOrder) {
  constexpr std::size_t kPrinted = 2 * kMaxWaitingDebugLines;
  UnreadConsole console;
  EXPECT_TRUE(returnsByItself([] {
    for (std::size_t i = 0; i < kPrinted; ++i) debugPrint("line " + std::to_string(i));
  }));
  EXPECT_FALSE(flushDebugOutput(std::chrono::steady_clock::now()));
  std::size_t written = 0;
  // A writer that starts late makes room for one line between two runs of dropped ones.
  for (std::size_t next = 0; next < kPrinted;) {
    const std::string line = console.readLine();
    const std::size_t dropped = line.starts_with("... ") ? std::stoul(line.substr(4)) : 0;
    ASSERT_EQ(line, dropped > 0 ? "... " + std::to_string(dropped) + " lines dropped"
                                : "line " + std::to_string(next));
    written += dropped > 0 ? 0 : 1;
    next += std::max<std::size_t>(dropped, 1);
  }
  EXPECT_GE(written, kMaxWaitingDebugLines);
  EXPECT_LE(written, kMaxWaitingDebugLines + 1);
  debugPrint("after");
  EXPECT_EQ(console.readLine(), "after");
}

TEST_F(DebugConsoleTest, AFewLongLinesAreBoundedToo) {
  UnreadConsole console;
  debugPrint("first");
  debugPrint(std::string(kMaxWaitingDebugBytes, 'x'));
  debugPrint("last");
  EXPECT_EQ(console.readLine(), "first");
  EXPECT_EQ(console.readLine(), "... 1 lines dropped");
  EXPECT_EQ(console.readLine(), "last");
}

/// What a sink of the host's was given: "LEVEL line", the level as its number.
struct KeptLines {
  std::mutex mutex;
  std::vector<std::string> lines;
  LogSink sink() {
    return [this](LogLevel level, std::string_view line) {
      const std::lock_guard lock(mutex);
      lines.push_back(std::to_string(static_cast<int>(level)) + " " + std::string(line));
    };
  }
};

class LogSinkTest : public testing::Test {
 protected:
  ~LogSinkTest() override {
    EXPECT_TRUE(flushDebugOutput(testDeadline()));
    setLogSink(nullptr);
    setIsInDebugMode(false);
  }
  KeptLines kept_;
};

TEST_F(LogSinkTest, GetsWarningsAlwaysAndDebugLinesInDebugMode) {
  logMessage(LogLevel::warning, "nobody listens");
  setLogSink(kept_.sink());
  debugPrint("no debug mode");
  logMessage(LogLevel::warning, "w");
  setIsInDebugMode(true);
  debugPrint("d");
  logMessage(LogLevel::error, "e");
  ASSERT_TRUE(flushDebugOutput(testDeadline()));
  EXPECT_EQ(kept_.lines, (std::vector<std::string>{"1 w", "0 d", "2 e"}));
}

TEST_F(LogSinkTest, MayThrowLogReplaceItselfAndNotReturn) {
  setIsInDebugMode(true);
  setLogSink([this](LogLevel level, std::string_view line) {
    debugPrint("from the sink");
    kept_.sink()(level, line);
    setLogSink(kept_.sink());
    throw 7;
  });
  debugPrint("a");
  debugPrint("b");
  ASSERT_TRUE(flushDebugOutput(testDeadline()));
  EXPECT_EQ(kept_.lines, (std::vector<std::string>{"0 a", "0 b"}));
  std::promise<void> mayReturn;
  setLogSink([go = mayReturn.get_future().share()](auto, auto) { go.wait(); });
  EXPECT_TRUE(returnsByItself([] {
    for (std::size_t i = 0; i < 2 * kMaxWaitingDebugLines; ++i) debugPrint("x");
    setLogSink(nullptr);
    setLogSink([](auto, auto) {});
  }));
  mayReturn.set_value();
}

TEST_F(LogSinkTest, IsReplacedWhileOthersLog) {
  setIsInDebugMode(true);
  std::atomic<int> alive = 0;
  {
    std::array<std::jthread, 4> threads;
    for (std::jthread& thread : threads) {
      thread = std::jthread([](const std::stop_token& stop) {
        while (!stop.stop_requested()) debugPrint("x");
      });
    }
    for (int i = 0; i < 500; ++i) {
      const std::shared_ptr<void> token(
          &alive, [](void* count) { --*static_cast<std::atomic<int>*>(count); });
      ++alive;
      setLogSink([token](auto, auto) {});
    }
  }
  ASSERT_TRUE(flushDebugOutput(testDeadline()));
  setLogSink([](auto, auto) {});
  EXPECT_EQ(alive, 0);
}

}  // namespace
}  // namespace quorvance
