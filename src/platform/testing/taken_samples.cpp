#include "platform/testing/taken_samples.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "base/debug.h"

namespace quorvance {
namespace {

// A sink is a plain function, so what it fills is static.
std::mutex linesMutex;
std::condition_variable lineCame;
std::vector<std::string> linesSeen;

void takeLine(std::string_view line) {
  const std::lock_guard lock(linesMutex);
  linesSeen.emplace_back(line);
  lineCame.notify_all();
}

}  // namespace

TakenSamples::TakenSamples() {
  setDebugSink(&takeLine);
  setIsInDebugMode(true);
}

TakenSamples::~TakenSamples() {
  setIsInDebugMode(false);
  setDebugSink(nullptr);
  const std::lock_guard lock(linesMutex);
  linesSeen.clear();
}

bool TakenSamples::waitForAnother(std::string_view sensor, std::chrono::seconds timeout) const {
  const std::string end = std::string(sensor) + "]";
  const auto countLocked = [&] {
    return std::count_if(linesSeen.begin(), linesSeen.end(),
                         [&](const std::string& line) { return line.ends_with(end); });
  };
  std::unique_lock lock(linesMutex);
  const auto before = countLocked();
  return lineCame.wait_for(lock, timeout, [&] { return countLocked() > before; });
}

}  // namespace quorvance
