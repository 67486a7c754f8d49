#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace quorvance {

/// What a stored report tells of; the order and the words are fixed.
enum class ReportCategory { bio = 0, crash = 1, communicationError = 2, activity = 3 };

inline constexpr std::array<std::string_view, 4> kReportCategoryWords = {
    "bio", "crash", "communicationError", "activity"};
static_assert(kReportCategoryWords[static_cast<std::size_t>(ReportCategory::activity)] ==
              "activity");

constexpr std::string_view categoryWord(ReportCategory category) {
  return kReportCategoryWords[static_cast<std::size_t>(category)];
}

}  // namespace quorvance
