#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quorvance {

/// How a process ended.
struct ProcessEnd {
  /// 0 unless a signal ended it.
  int signal = 0;
  /// -1 when a signal ended it, or it could not be started.
  int exitStatus = -1;
  /// It had to be killed, since it did not end by itself.
  bool wasHanging = false;
  std::int64_t milliseconds = 0;
  /// Monotonic nanoseconds.
  std::int64_t endTime = 0;
};

/// Where a process's words go: one file each.
struct ProcessWords {
  std::string output;
  std::string complaints;
};

/// Runs a program to its end, with these "NAME=value" before all others of the environment.
ProcessEnd runToItsEnd(std::vector<std::string> command, const ProcessWords& words,
                       std::vector<std::string> environment);

/// The whole file, empty when it is not there.
std::string textOfFile(const std::string& path);

}  // namespace quorvance
