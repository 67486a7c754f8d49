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

/// Whether the host has verified an address, a number or an identity.
enum class VerificationType : std::int64_t { VERIFIED = 0, NOT_VERIFIED = 1, UNKNOWN = 2 };

/// An unknown word reads as UNKNOWN.
using VerificationTypeToString = VocabularyToString<VerificationType>;
using VerificationTypeEnumerator = VocabularyEnumerator<VerificationType>;

extern template class VocabularyToString<VerificationType>;
extern template class VocabularyEnumerator<VerificationType>;

/// A postal address. Texts are sent exactly as they stand; an absent one is left out.
struct Address {
  std::optional<std::string> firstName{};
  std::optional<std::string> lastName{};
  std::optional<std::string> addressLine1{};
  std::optional<std::string> addressLine2{};
  std::optional<std::string> city{};
  std::optional<std::string> state{};
  std::optional<std::string> country{};
  std::optional<std::string> postalCode{};
  std::optional<std::string> phoneNumber{};

  /// Never fails: a key of another type is ignored.
  template <class Value = Json>
  static Address fromJson(const std::type_identity_t<Value>& json) {
    return readJson(jsonSource(json));
  }
  static Address readJson(const JsonSource& json);
  template <class Value = Json>
  Value getJson() const {
    return writtenJson<Value>([this](JsonSink& sink) { writeJson(sink); });
  }
  void writeJson(JsonSink& sink) const;
};

/// The person who acts. An absent text is left out, an absent verification goes out as "UNKNOWN"
/// and an absent address as {}.
struct User {
  std::optional<std::string> userId{};
  std::optional<std::string> email{};
  std::optional<VerificationType> isEmailVerified{};
  /// Phone number.
  std::optional<std::string> phoneUser{};
  /// Its key is "isPhoneUserVerified".
  std::optional<VerificationType> isPhoneVerified{};
  std::shared_ptr<const Address> address{};
  /// Its key is "isKYCVerified" (know your customer).
  std::optional<VerificationType> isKycVerified{};

  /// Never fails: a key of another type is ignored, an unknown verification reads as UNKNOWN.
  template <class Value = Json>
  static User fromJson(const std::type_identity_t<Value>& json) {
    return readJson(jsonSource(json));
  }
  static User readJson(const JsonSource& json);
  template <class Value = Json>
  Value getJson() const {
    return writtenJson<Value>([this](JsonSink& sink) { writeJson(sink); });
  }
  void writeJson(JsonSink& sink) const;
};

}  // namespace quorvance

#pragma GCC visibility pop
