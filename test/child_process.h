#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

namespace quorvance {

/// How a process ended.
struct ProcessEnd {
  /// 0 unless a signal ended it.
  int signal = 0;
  /// -1 when a signal ended it.
  int exitStatus = -1;
  /// It had to be killed, since it did not end by itself.
  bool wasHanging = false;
  std::int64_t milliseconds = 0;
  /// Monotonic nanoseconds.
  std::int64_t endTime = 0;
};

/// A program that says things in lines, and is killed at the latest at this object's end.
class ChildProcess {
 public:
  /// Its complaints go into the file; these "NAME=value" come before all others of its environment.
  explicit ChildProcess(std::vector<std::string> command,
                        const std::string& complaints = "/dev/null",
                        std::vector<std::string> environment = {});
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /// Until it has said so many lines, or this one; or until its end.
  void waitForLines(std::size_t count);
  void waitForLine(const std::string& line);
  /// Until it has ended by itself, or would not.
  ProcessEnd waitForEnd();
  /// Ends it without a warning; what it said before can still be read.
  void kill();

  const std::string& said() const { return said_; }
  std::vector<std::string> wholeLines() const;

 private:
  /// False at the end of what it says, and when it says nothing for very long.
  bool readSome();
  ProcessEnd reap();

  const std::int64_t startTime_;
  pid_t process_ = -1;
  int output_ = -1;
  bool isSilent_ = false;
  std::string said_;
};

}  // namespace quorvance
