#pragma once

#include <cstdint>

#include "diagnostics/error_log_data.h"
#include "quorvance/crash_model.h"

namespace quorvance {

/// A crash as the report that is kept of it: stack, cause = reason, type = name, code = the
/// signal's number in the server's vocabulary (absent for an exception and for "OTHER").
ErrorLogData crashReport(const CrashModel& crash, std::int64_t now);

}  // namespace quorvance
