#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace quorvance {

/// A process that says things in lines, and is killed at the latest at this object's end.
class TalkingProcess {
 public:
  explicit TalkingProcess(std::vector<std::string> command) {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC), 0);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    std::vector<char*> words;
    for (std::string& word : command) words.push_back(word.data());
    words.push_back(nullptr);
    EXPECT_EQ(posix_spawn(&process_, words[0], &actions, nullptr, words.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    output_ = ends[0];
  }
  ~TalkingProcess() {
    kill();
    close(output_);
  }
  TalkingProcess(const TalkingProcess&) = delete;
  TalkingProcess& operator=(const TalkingProcess&) = delete;

  /// Until it has said so many lines, or this one; or until its end.
  void waitForLines(std::size_t count) {
    while (wholeLines().size() < count && readSome()) {
    }
  }
  void waitForLine(const std::string& line) {
    while (("\n" + said_).find("\n" + line + "\n") == std::string::npos && readSome()) {
    }
  }

  /// Ends it without a warning; what it said before can still be read.
  void kill() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    int status = 0;
    waitpid(process_, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status)) << "it ended by itself: " << said_;
    process_ = -1;
    while (readSome()) {
    }
  }

  std::vector<std::string> wholeLines() const {
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (auto end = said_.find('\n'); end != std::string::npos; end = said_.find('\n', start)) {
      lines.push_back(said_.substr(start, end - start));
      start = end + 1;
    }
    return lines;
  }

 private:
  bool readSome() {
    std::array<char, 4096> buffer{};
    const ssize_t count = read(output_, buffer.data(), buffer.size());
    if (count > 0) said_.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
  }

  pid_t process_ = -1;
  int output_ = -1;
  std::string said_;
};

}  // namespace quorvance
