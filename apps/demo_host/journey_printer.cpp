#include "apps/demo_host/journey_printer.h"

#include <iomanip>
#include <sstream>

namespace demo_host {
namespace {

constexpr int kNumberWidth = 4;
constexpr int kWhatWidth = 18;
constexpr int kResultWidth = 9;
constexpr int kRequestWidth = 36;
constexpr int kTimeWidth = 9;
constexpr int kCountWidth = 6;
constexpr const char* kGap = "  ";

std::string columns(const std::string& number, const StepLine& line) {
  std::ostringstream text;
  text << std::setw(kNumberWidth) << number << kGap << std::left << std::setw(kWhatWidth)
       << line.what << kGap << std::setw(kResultWidth) << line.result << kGap
       << std::setw(kRequestWidth) << line.requestId << std::right << std::setw(kTimeWidth)
       << line.time << kGap << line.note;
  std::string whole = text.str();
  whole.erase(whole.find_last_not_of(' ') + 1);
  return whole;
}

}  // namespace

std::string formatStep(const StepLine& line) {
  return columns(line.number == 0 ? "" : std::to_string(line.number), line);
}

std::string formatTime(std::chrono::milliseconds time) {
  return std::to_string(time.count()) + " ms";
}

void JourneyPrinter::print(const std::string& line) { out_ << line + "\n" << std::flush; }

void JourneyPrinter::printHeading() {
  print("");
  print(columns("step", {0, "checkpoint", "verdict", "request", "time", ""}));
}

void JourneyPrinter::printTally(const Tally& tally) {
  print("");
  print("calls that the server accepted, by path");
  for (const auto& [path, count] : tally.calls) {
    std::ostringstream line;
    line << std::setw(kCountWidth) << count << kGap << path;
    print(line.str());
  }
  print("calls that the server refused: " + std::to_string(tally.refused));
}

}  // namespace demo_host
