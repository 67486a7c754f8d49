#include "quorvance/currency_code.h"

#include "base/vocabulary_table.h"

namespace quorvance {

template <>
struct VocabularyTable<CurrencyCode> {
#define QUORVANCE_WORD(code) #code,
  static constexpr auto kWords =
      std::to_array<std::string_view>({QUORVANCE_CURRENCY_CODES(QUORVANCE_WORD)});
#undef QUORVANCE_WORD
  static constexpr CurrencyCode kFallback = CurrencyCode::USD;
  static constexpr CurrencyCode kLast = CurrencyCode::XAG;
};

static_assert(VocabularyTable<CurrencyCode>::kWords.size() == 179);
static_assert(static_cast<int>(CurrencyCode::GBP) == 65);

template class VocabularyToString<CurrencyCode>;
template class VocabularyEnumerator<CurrencyCode>;

}  // namespace quorvance
