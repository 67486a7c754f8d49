#include "quorvance/user.h"

#include "base/record.h"
#include "base/vocabulary_table.h"

namespace quorvance {

template <>
struct VocabularyTable<VerificationType> {
  static constexpr auto kWords =
      std::to_array<std::string_view>({"VERIFIED", "NOT_VERIFIED", "UNKNOWN"});
  static constexpr VerificationType kFallback = VerificationType::UNKNOWN;
  static constexpr VerificationType kLast = VerificationType::UNKNOWN;
};

template class VocabularyToString<VerificationType>;
template class VocabularyEnumerator<VerificationType>;

namespace {

constexpr auto kAddressFields = RecordTable{
    field<&Address::firstName>("firstName"),
    field<&Address::lastName>("lastName"),
    field<&Address::addressLine1>("addressLine1"),
    field<&Address::addressLine2>("addressLine2"),
    field<&Address::city>("city"),
    field<&Address::state>("state"),
    field<&Address::country>("country"),
    field<&Address::postalCode>("postalCode"),
    field<&Address::phoneNumber>("phoneNumber"),
};

using VerificationField = NeutralVocabularyField<VerificationType, VerificationType::UNKNOWN>;

constexpr auto kUserFields = RecordTable{
    field<&User::userId>("user_id"),
    field<&User::email>("email"),
    field<&User::isEmailVerified>("isEmailVerified", VerificationField::kCodec),
    field<&User::phoneUser>("phoneUser"),
    field<&User::isPhoneVerified>("isPhoneUserVerified", VerificationField::kCodec),
    field<&User::isKycVerified>("isKYCVerified", VerificationField::kCodec),
    field<&User::address>("user_address", RecordOrEmptyField<Address>::kCodec),
};

}  // namespace

void Address::writeJson(JsonSink& sink) const {
  giveJson(sink, recordToJson(*this, kAddressFields));
}

Address Address::readJson(const JsonSource& json) {
  return recordFromJson(*JsonView(json), kAddressFields);
}

void User::writeJson(JsonSink& sink) const { giveJson(sink, recordToJson(*this, kUserFields)); }

User User::readJson(const JsonSource& json) { return recordFromJson(*JsonView(json), kUserFields); }

}  // namespace quorvance
