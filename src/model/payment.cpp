#include "quorvance/payment.h"

#include "base/record.h"
#include "base/vocabulary_table.h"

namespace quorvance {

template <>
struct VocabularyTable<PaymentMethodType> {
  static constexpr auto kWords =
      std::to_array<std::string_view>({"CREDIT_CARD", "BANK_ACCOUNT", "ECHECK", "UNKNOWN"});
  static constexpr PaymentMethodType kFallback = PaymentMethodType::UNKNOWN;
  static constexpr PaymentMethodType kLast = PaymentMethodType::UNKNOWN;
};

template class VocabularyToString<PaymentMethodType>;
template class VocabularyEnumerator<PaymentMethodType>;

namespace {

constexpr auto kCardFields = RecordTable{
    field<&CreditCardDetail::bin>("bin"),
    field<&CreditCardDetail::lastFourDigit>("lastFourDigit"),
    field<&CreditCardDetail::yearExpiryDate>("yearExpiryDate"),
    field<&CreditCardDetail::monthExpiryDate>("monthExpiryDate"),
    field<&CreditCardDetail::cardToken>("card_token"),
    field<&CreditCardDetail::cardId>("cardId"),
};

constexpr auto kBankFields = RecordTable{
    field<&BankAccountDetails::number>("bankAccountNumber"),
    field<&BankAccountDetails::fullName>("bankAccountFullname"),
    field<&BankAccountDetails::bsb>("bankAccountBsb"),
};

constexpr auto kPaymentFields = RecordTable{
    field<&Payment::paymentMethod>("paymentMethod"),
    field<&Payment::processor>("processor"),
    field<&Payment::fullNameOnCard>("fullNameOnCard"),
    field<&Payment::paymentMethodId>("paymentMethodId"),
    field<&Payment::creditCardDetail>("creditCardDetail"),
    field<&Payment::bankAccountDetails>("bankAccountDetails"),
};

}  // namespace

Json CreditCardDetail::getJson() const { return recordToJson(*this, kCardFields); }

CreditCardDetail CreditCardDetail::fromJson(const Json& json) {
  return recordFromJson(json, kCardFields);
}

Json BankAccountDetails::getJson() const { return recordToJson(*this, kBankFields); }

BankAccountDetails BankAccountDetails::fromJson(const Json& json) {
  return recordFromJson(json, kBankFields);
}

Json Payment::getJson() const { return recordToJson(*this, kPaymentFields); }

Payment Payment::fromJson(const Json& json) { return recordFromJson(json, kPaymentFields); }

}  // namespace quorvance
