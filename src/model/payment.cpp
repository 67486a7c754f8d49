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

void CreditCardDetail::writeJson(JsonSink& sink) const {
  giveJson(sink, recordToJson(*this, kCardFields));
}

CreditCardDetail CreditCardDetail::readJson(const JsonSource& json) {
  return recordFromJson(*JsonView(json), kCardFields);
}

void BankAccountDetails::writeJson(JsonSink& sink) const {
  giveJson(sink, recordToJson(*this, kBankFields));
}

BankAccountDetails BankAccountDetails::readJson(const JsonSource& json) {
  return recordFromJson(*JsonView(json), kBankFields);
}

void Payment::writeJson(JsonSink& sink) const {
  giveJson(sink, recordToJson(*this, kPaymentFields));
}

Payment Payment::readJson(const JsonSource& json) {
  return recordFromJson(*JsonView(json), kPaymentFields);
}

}  // namespace quorvance
