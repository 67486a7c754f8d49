#include "platform/linux/crash/crash_recorder.h"

#include <time.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace quorvance {
namespace {

// What each placeholder may come to in the file, escapes included.
constexpr std::size_t kMaxStackSlotBytes = kMaxCallStackBytes + 16UL * 1024;
constexpr std::size_t kMaxReasonSlotBytes = 8UL * 1024;
constexpr std::size_t kMaxNameSlotBytes = 2UL * 1024;
constexpr std::size_t kMaxNumberBytes = 20;

constexpr std::size_t kMaxPlaceholderBytes =
    kMaxStackSlotBytes + kMaxReasonSlotBytes + kMaxNameSlotBytes + kMaxNumberBytes;

std::int64_t millisecondsNow() {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

/// Bytes of a template without its placeholders.
std::size_t fixedBytesOf(const CrashReportTemplate& reportTemplate) {
  std::size_t bytes = 0;
  for (const CrashTemplatePart& part : reportTemplate) bytes += part.bytes.size();
  return bytes;
}

std::size_t longestTemplate(const CrashPlan& plan) {
  std::size_t bytes = fixedBytesOf(plan.exceptionTemplate);
  for (const SignalPlan& signal : plan.signals)
    bytes = std::max(bytes, fixedBytesOf(signal.reportTemplate));
  return bytes;
}

}  // namespace

CrashRecorder::CrashRecorder(const CrashPlan& plan)
    : file_(plan.folder.value_or(""), plan.category, plan.maxFiles),
      memory_(longestTemplate(plan) + kMaxPlaceholderBytes),
      report_(memory_.span()) {}

bool CrashRecorder::write(const CrashReportTemplate& reportTemplate, std::string_view name,
                          std::string_view reason) {
  report_.clear();
  for (const CrashTemplatePart& part : reportTemplate) {
    report_.append(part.bytes);
    switch (part.next) {
      case CrashPlaceholder::nothing:
        break;
      case CrashPlaceholder::callStack:
        report_.appendEscaped(stack_.text(), kMaxStackSlotBytes);
        break;
      case CrashPlaceholder::reason:
        report_.appendEscaped(reason, kMaxReasonSlotBytes);
        break;
      case CrashPlaceholder::name:
        report_.appendEscaped(name, kMaxNameSlotBytes);
        break;
      case CrashPlaceholder::milliseconds:
        report_.appendDecimal(milliseconds_);
        break;
    }
  }
  return file_.replace(report_.view());
}

CrashRecord CrashRecorder::record(const CrashReportTemplate& reportTemplate, std::string_view name,
                                  std::string_view reason, const void* top) {
  milliseconds_ = millisecondsNow();
  stack_.collect(top);
  stack_.writeAddresses();
  const CrashFile::State state = file_.open();
  const bool isWritten = state == CrashFile::State::ready && write(reportTemplate, name, reason);
  stack_.writeSymbols();
  if (!isWritten) {
    return state == CrashFile::State::full ? CrashRecord::full : CrashRecord::failed;
  }
  // On failure the report with bare addresses stands.
  static_cast<void>(write(reportTemplate, name, reason));
  file_.synchronize();
  return CrashRecord::stored;
}

}  // namespace quorvance
