#include "test/child_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>

namespace quorvance {
namespace {

// Only a process that hangs is waited for so long.
constexpr int kPatienceMilliseconds = 20'000;

std::int64_t nanosecondsNow() {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

ChildProcess::ChildProcess(std::vector<std::string> command, const std::string& complaints,
                           std::vector<std::string> environment)
    : startTime_(nanosecondsNow()) {
  for (char** entry = environ; *entry != nullptr; ++entry) environment.emplace_back(*entry);
  std::array<int, 2> ends{};
  EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, complaints.c_str(),
                                   O_WRONLY | O_CREAT | O_APPEND, 0600);
  EXPECT_EQ(posix_spawn(&process_, command.front().c_str(), &actions, nullptr,
                        pointersTo(command).data(), pointersTo(environment).data()),
            0);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  output_ = ends[0];
}

ChildProcess::~ChildProcess() {
  kill();
  close(output_);
}

void ChildProcess::waitForLines(std::size_t count) {
  while (wholeLines().size() < count && readSome()) {
  }
}

void ChildProcess::waitForLine(const std::string& line) {
  while (("\n" + said_).find("\n" + line + "\n") == std::string::npos && readSome()) {
  }
}

ProcessEnd ChildProcess::waitForEnd() {
  while (readSome()) {
  }
  if (isSilent_) ::kill(process_, SIGKILL);
  return reap();
}

void ChildProcess::kill() {
  if (process_ <= 0) return;
  ::kill(process_, SIGKILL);
  EXPECT_NE(reap().signal, 0) << "it ended by itself: " << said_;
  while (readSome()) {
  }
}

std::vector<std::string> ChildProcess::wholeLines() const {
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (auto end = said_.find('\n'); end != std::string::npos; end = said_.find('\n', start)) {
    lines.push_back(said_.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

bool ChildProcess::readSome() {
  pollfd readable = {output_, POLLIN, 0};
  isSilent_ = poll(&readable, 1, kPatienceMilliseconds) != 1;
  std::array<char, 4096> buffer{};
  const ssize_t count = isSilent_ ? 0 : read(output_, buffer.data(), buffer.size());
  if (count > 0) said_.append(buffer.data(), static_cast<std::size_t>(count));
  return count > 0;
}

ProcessEnd ChildProcess::reap() {
  ProcessEnd end;
  int status = 0;
  waitpid(process_, &status, 0);
  process_ = -1;
  end.endTime = nanosecondsNow();
  end.milliseconds = (end.endTime - startTime_) / 1'000'000;
  end.wasHanging = isSilent_;
  if (WIFSIGNALED(status)) end.signal = WTERMSIG(status);
  if (WIFEXITED(status)) end.exitStatus = WEXITSTATUS(status);
  return end;
}

}  // namespace quorvance
