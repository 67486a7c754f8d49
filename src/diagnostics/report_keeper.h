#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "base/json.h"
#include "diagnostics/error_log_data.h"

namespace quorvance {

/// What a stored report tells of; the order and the words are fixed.
enum class ReportCategory { bio = 0, crash = 1, communicationError = 2, activity = 3 };

inline constexpr std::array<std::string_view, 4> kReportCategoryWords = {
    "bio", "crash", "communicationError", "activity"};

constexpr std::string_view categoryWord(ReportCategory category) {
  return kReportCategoryWords[static_cast<std::size_t>(category)];
}

/// Keeps reports until they can be sent. Any thread; silent about what it could not keep.
class ReportKeeper {
 public:
  virtual ~ReportKeeper() = default;
  /// Hands the report to the disk and returns without waiting for it; of one thread's reports, in
  /// order.
  virtual void storeReport(Json report, ReportCategory category) = 0;
  /// The same; the record gets the system's version there if it has none.
  virtual void storeReport(ErrorLogData record, ReportCategory category) = 0;
};

}  // namespace quorvance
