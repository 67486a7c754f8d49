#include "quorvance/log.h"

#include <memory>
#include <utility>

#include "base/debug.h"
#include "base/debug_output.h"
#include "base/forked_child.h"
#include "base/out_of_memory.h"

namespace quorvance {

void setLogSink(LogSink sink) noexcept {
  if (isForkedChild()) return;
  std::shared_ptr<const LogSink> shared;
  const bool hasMemory = hasMemoryFor([&] {
    if (sink) shared = std::make_shared<const LogSink>(std::move(sink));
  });
  if (hasMemory) DebugOutput::ofProcess().setSink(std::move(shared));
}

void logMessage(LogLevel level, std::string_view line) noexcept {
  if (isForkedChild()) return;
  if (isInDebugMode()) return debugPrint(line, level);
  if (DebugOutput::ofProcess().hasSink()) DebugOutput::ofProcess().add(line, level);
}

}  // namespace quorvance
