#pragma once

#include <cstdint>

#include "quorvance/vocabulary.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// What kind of transaction it is.
enum class TransactionType : std::int64_t {
  PURCHASE = 0,
  MONEY_TRANSFER = 1,
  DEPOSIT = 2,
  WITHDRAW = 3,
  /// From person to person.
  P2P = 4,
  IN_STORE = 5,
  LOAD = 6,
  AIRTIME = 7,
  ONLINE_STORE = 8,
  EXTERNAL_DEPOSIT = 9,
  EXTERNAL_MONEY_TRANSFER = 10,
  INTERNATIONAL_MONEY_TRANSFER = 11,
  DEBIT_CARD = 12,
  CREDIT_CARD = 13,
  GIFT_CARD = 14,
  SAVING_DEPOSIT = 15,
  SAVING_WITHDRAW = 16,
  BILL_PAYMENT = 17,
};

/// An unknown word reads as P2P.
using TransactionTypeToString = VocabularyToString<TransactionType>;
using TransactionTypeEnumerator = VocabularyEnumerator<TransactionType>;

extern template class VocabularyToString<TransactionType>;
extern template class VocabularyEnumerator<TransactionType>;

}  // namespace quorvance

#pragma GCC visibility pop
