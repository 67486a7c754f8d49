#include "base/debug.h"

#include <atomic>
#include <cstdio>
#include <string>

namespace quorvance {
namespace {

std::atomic<bool> debugMode{false};
std::atomic<DebugSink> debugSink{nullptr};

// One write a line: lines of several threads do not mix.
void printToConsole(std::string_view line) {
  std::string text(line);
  text += '\n';
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

}  // namespace

bool isInDebugMode() noexcept { return debugMode.load(std::memory_order_relaxed); }

void setIsInDebugMode(bool on) noexcept { debugMode.store(on, std::memory_order_relaxed); }

void setDebugSink(DebugSink sink) noexcept { debugSink.store(sink); }

void debugPrint(std::string_view line) {
  if (!isInDebugMode()) return;
  const DebugSink sink = debugSink.load();
  sink != nullptr ? sink(line) : printToConsole(line);
}

}  // namespace quorvance
