// The demo's output: a line a step, in columns.
#pragma once

#include <chrono>
#include <cstdint>
#include <ostream>
#include <string>

#include "apps/demo_host/server_tally.h"

namespace demo_host {

// The columns of one step; an empty one stays blank.
struct StepLine {
  // Absent (0) for a line that belongs to the step above.
  std::size_t number = 0;
  std::string what;
  std::string result;
  std::string requestId;
  std::string time;
  std::string note;
};

std::string formatStep(const StepLine& line);
// "12 ms"
std::string formatTime(std::chrono::milliseconds time);

// Writes whole lines at once and flushes them, since the library may print between them.
class JourneyPrinter {
 public:
  explicit JourneyPrinter(std::ostream& out) : out_(out) {}

  void print(const std::string& line);
  void printHeading();
  void printStep(const StepLine& line) { print(formatStep(line)); }
  void printTally(const Tally& tally);

 private:
  std::ostream& out_;
};

}  // namespace demo_host
