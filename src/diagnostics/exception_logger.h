#pragma once

#include <memory>
#include <string_view>

#include "diagnostics/tracing_manager.h"

namespace quorvance {

/// Where platform errors go: into the trace buffer and, in debug mode, to the console. Any thread.
class ExceptionLogger {
 public:
  explicit ExceptionLogger(std::shared_ptr<TracingManager> tracing);
  void logException(const PlatformError& error) const;

 private:
  const std::shared_ptr<TracingManager> tracing_;
};

}  // namespace quorvance
