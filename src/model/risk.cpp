#include "quorvance/risk.h"

#include "base/vocabulary_table.h"

namespace quorvance {

template <>
struct VocabularyTable<RiskLevel> {
  static constexpr std::int64_t kFirstRaw = -2;
  // The negative levels keep their lower-case words: the server writes them so.
  static constexpr auto kWords = std::to_array<std::string_view>(
      {"expire", "undefined", "LOW", "MEDIUM", "HIGH", "VERY_HIGH"});
  static constexpr auto kMenuWords =
      std::to_array<std::string_view>({"expire", "undefined", "low", "medium", "high", "veryHigh"});
  static constexpr RiskLevel kLast = RiskLevel::veryHigh;
};

template class VocabularyEnumerator<RiskLevel>;

std::string Risk::stringValue() const { return std::string(wordOf(riskLevel)); }

}  // namespace quorvance
