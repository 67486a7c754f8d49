#include "base/debug.h"

#include <atomic>

#include "base/debug_output.h"

namespace quorvance {
namespace {

std::atomic<bool> debugMode{false};
std::atomic<DebugSink> debugSink{nullptr};

}  // namespace

bool isInDebugMode() noexcept { return debugMode.load(std::memory_order_relaxed); }

void setIsInDebugMode(bool on) noexcept { debugMode.store(on, std::memory_order_relaxed); }

void setDebugSink(DebugSink sink) noexcept { debugSink.store(sink); }

void debugPrint(std::string_view line, LogLevel level) noexcept {
  if (!isInDebugMode()) return;
  const DebugSink sink = debugSink.load();
  sink != nullptr ? sink(line) : DebugOutput::ofProcess().add(line, level);
}

bool flushDebugOutput(std::chrono::steady_clock::time_point deadline) noexcept {
  return DebugOutput::ofProcess().flush(deadline);
}

}  // namespace quorvance
