#include "diagnostics/operation_trace.h"

#include <new>

namespace quorvance {

void OperationTrace::end() noexcept {
  try {
    tracing_.traceEnd(true, record_);
  } catch (const std::bad_alloc&) {
    // The end of an entry is not worth the host's process.
  }
}

}  // namespace quorvance
