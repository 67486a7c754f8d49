#include "diagnostics/exception_logger.h"

#include <utility>

#include "base/debug.h"

namespace quorvance {

ExceptionLogger::ExceptionLogger(std::shared_ptr<TracingManager> tracing)
    : tracing_(std::move(tracing)) {}

void ExceptionLogger::logException(const PlatformError& error) const {
  tracing_->traceException(error);
  if (isInDebugMode()) debugPrint(error.text());
}

}  // namespace quorvance
