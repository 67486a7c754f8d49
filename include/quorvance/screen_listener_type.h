#pragma once

#include <cstdint>

#include "quorvance/vocabulary.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// What kind of screen a listener watches.
enum class ScreenListenerType : std::int64_t {
  REGISTRATION_FORM = 0,
  LOGIN_FORM = 1,
  MAIN_SCREEN = 2,
  CATALOG_SCREEN = 3,
  SEARCH_SCREEN = 4,
  PRODUCT_SCREEN = 5,
  GENERAL_FORM = 6,
  PINCODE = 7,
  TRANSACTION_DETAILS = 8,
  CONTACTS = 9,
  PAYMENT_SCREEN = 10,
  EMULATOR_CHECK = 11,
  GENERAL = 12,
  ADD_PAYMENT_SCREEN = 13,
  WITHDRAW_SCREEN = 14,
  DEPOSIT_SCREEN = 15,
};

/// An unknown word reads as GENERAL; `fromNillableString` gives nothing for it.
using ScreenListenerTypeToString = NillableVocabularyToString<ScreenListenerType>;
using ScreenListenerTypeEnumerator = VocabularyEnumerator<ScreenListenerType>;

extern template class VocabularyToString<ScreenListenerType>;
extern template class NillableVocabularyToString<ScreenListenerType>;
extern template class VocabularyEnumerator<ScreenListenerType>;

}  // namespace quorvance

#pragma GCC visibility pop
