#include "diagnostics/crash_report.h"

#include "diagnostics/signal_names.h"

namespace quorvance {

ErrorLogData crashReport(const CrashModel& crash, std::int64_t now) {
  ErrorLogData record{.errorStack = crash.callStack,
                      .version = crash.iosVer,
                      .deviceModel = crash.devModel,
                      .sdkVersion = crash.sdkVer,
                      .cause = crash.reason,
                      .errorType = crash.name,
                      .error_timestamp = now};
  if (crash.type == CrashModelType::signal) record.errorCode = signalNumber(crash.name);
  return record;
}

}  // namespace quorvance
