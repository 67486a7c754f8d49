#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>

#include "quorvance/json_conversion.h"
#include "quorvance/vocabulary.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// What a payment is made with.
enum class PaymentMethodType : std::int64_t {
  CREDIT_CARD = 0,
  BANK_ACCOUNT = 1,
  ECHECK = 2,
  UNKNOWN = 3,
};

/// An unknown word reads as UNKNOWN.
using PaymentMethodTypeToString = VocabularyToString<PaymentMethodType>;
using PaymentMethodTypeEnumerator = VocabularyEnumerator<PaymentMethodType>;

extern template class VocabularyToString<PaymentMethodType>;
extern template class VocabularyEnumerator<PaymentMethodType>;

/// A card, by the host's token: never the card number. Absent fields are left out.
struct CreditCardDetail {
  /// Its key alone is in snake case: "card_token".
  std::optional<std::string> cardToken{};
  std::optional<std::string> cardId{};
  /// Issuer identification digits (ISO/IEC 7812).
  std::optional<std::string> bin{};
  std::optional<std::string> lastFourDigit{};
  std::optional<std::int64_t> yearExpiryDate{};
  std::optional<std::int64_t> monthExpiryDate{};

  /// Never fails: a key of another type is ignored.
  template <class Value = Json>
  static CreditCardDetail fromJson(const std::type_identity_t<Value>& json) {
    return readJson(jsonSource(json));
  }
  static CreditCardDetail readJson(const JsonSource& json);
  template <class Value = Json>
  Value getJson() const {
    return writtenJson<Value>([this](JsonSink& sink) { writeJson(sink); });
  }
  void writeJson(JsonSink& sink) const;
};

/// A bank account. Absent fields are left out.
struct BankAccountDetails {
  std::optional<std::string> number{};
  /// The account's holder; its key is "bankAccountFullname".
  std::optional<std::string> fullName{};
  /// Bank, state and branch number.
  std::optional<std::string> bsb{};

  /// Never fails: a key of another type is ignored.
  template <class Value = Json>
  static BankAccountDetails fromJson(const std::type_identity_t<Value>& json) {
    return readJson(jsonSource(json));
  }
  static BankAccountDetails readJson(const JsonSource& json);
  template <class Value = Json>
  Value getJson() const {
    return writtenJson<Value>([this](JsonSink& sink) { writeJson(sink); });
  }
  void writeJson(JsonSink& sink) const;
};

/// A payment instrument. Absent fields are left out, the details too.
struct Payment {
  std::optional<PaymentMethodType> paymentMethod{};
  std::optional<std::string> processor{};
  std::optional<std::string> fullNameOnCard{};
  std::optional<std::string> paymentMethodId{};
  std::shared_ptr<const CreditCardDetail> creditCardDetail{};
  std::shared_ptr<const BankAccountDetails> bankAccountDetails{};

  /// Never fails: a key of another type is ignored, an unknown method reads as UNKNOWN.
  template <class Value = Json>
  static Payment fromJson(const std::type_identity_t<Value>& json) {
    return readJson(jsonSource(json));
  }
  static Payment readJson(const JsonSource& json);
  template <class Value = Json>
  Value getJson() const {
    return writtenJson<Value>([this](JsonSink& sink) { writeJson(sink); });
  }
  void writeJson(JsonSink& sink) const;
};

}  // namespace quorvance

#pragma GCC visibility pop
