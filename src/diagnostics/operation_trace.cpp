#include "diagnostics/operation_trace.h"

namespace quorvance {

void OperationTrace::end() noexcept {
  // Nor is its end.
  hasMemoryFor([&] { tracing_.traceEnd(true, record_); });
}

}  // namespace quorvance
