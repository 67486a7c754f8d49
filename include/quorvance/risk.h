#pragma once

#include <cstdint>
#include <string>

#include "quorvance/vocabulary.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// The server's verdict. The two negative levels are no verdicts: a session that has expired, and
/// no usable answer.
enum class RiskLevel : std::int64_t {
  expire = -2,
  undefined = -1,
  low = 0,
  medium = 1,
  high = 2,
  veryHigh = 3,
};

/// Its `dictionary` has lower-camel names ("veryHigh"), which differ from the wire words.
using RiskLevelEnumerator = VocabularyEnumerator<RiskLevel>;

extern template class VocabularyEnumerator<RiskLevel>;

/// A verdict as the host receives it.
class Risk {
 public:
  RiskLevel riskLevel = RiskLevel::undefined;

  /// The wire word of the level: "LOW", "MEDIUM", "HIGH", "VERY_HIGH", and in lower case "expire"
  /// and "undefined".
  std::string stringValue() const;
};

}  // namespace quorvance

#pragma GCC visibility pop
