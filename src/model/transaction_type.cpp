#include "quorvance/transaction_type.h"

#include "base/vocabulary_table.h"

namespace quorvance {

template <>
struct VocabularyTable<TransactionType> {
  static constexpr auto kWords = std::to_array<std::string_view>(
      {"PURCHASE", "MONEY_TRANSFER", "DEPOSIT", "WITHDRAW", "P2P", "IN_STORE", "LOAD", "AIRTIME",
       "ONLINE_STORE", "EXTERNAL_DEPOSIT", "EXTERNAL_MONEY_TRANSFER",
       "INTERNATIONAL_MONEY_TRANSFER", "DEBIT_CARD", "CREDIT_CARD", "GIFT_CARD", "SAVING_DEPOSIT",
       "SAVING_WITHDRAW", "BILL_PAYMENT"});
  static constexpr TransactionType kFallback = TransactionType::P2P;
  static constexpr TransactionType kLast = TransactionType::BILL_PAYMENT;
};

template class VocabularyToString<TransactionType>;
template class VocabularyEnumerator<TransactionType>;

}  // namespace quorvance
