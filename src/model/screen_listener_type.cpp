#include "quorvance/screen_listener_type.h"

#include "base/vocabulary_table.h"

namespace quorvance {

template <>
struct VocabularyTable<ScreenListenerType> {
  static constexpr auto kWords = std::to_array<std::string_view>(
      {"REGISTRATION_FORM", "LOGIN_FORM", "MAIN_SCREEN", "CATALOG_SCREEN", "SEARCH_SCREEN",
       "PRODUCT_SCREEN", "GENERAL_FORM", "PINCODE", "TRANSACTION_DETAILS", "CONTACTS",
       "PAYMENT_SCREEN", "EMULATOR_CHECK", "GENERAL", "ADD_PAYMENT_SCREEN", "WITHDRAW_SCREEN",
       "DEPOSIT_SCREEN"});
  static constexpr ScreenListenerType kFallback = ScreenListenerType::GENERAL;
  static constexpr ScreenListenerType kLast = ScreenListenerType::DEPOSIT_SCREEN;
};

template class VocabularyToString<ScreenListenerType>;
template class NillableVocabularyToString<ScreenListenerType>;
template class VocabularyEnumerator<ScreenListenerType>;

}  // namespace quorvance
