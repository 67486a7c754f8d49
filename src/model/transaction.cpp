#include "quorvance/transaction.h"

#include <utility>

#include "base/json_exchange.h"
#include "base/milliseconds.h"
#include "base/record.h"
#include "model/check_point_json.h"

namespace quorvance {
namespace {

constexpr std::string_view kAmountKey = "amount";

constexpr auto kMerchantFields = RecordTable{
    field<&MerchantDetails::merchantName>("merchant_name"),
    field<&MerchantDetails::merchantCode>("merchant_code"),
    field<&MerchantDetails::merchantAddress>("merchant_address"),
};

constexpr auto kAuthorizationFields = RecordTable{
    field<&AuthorizationResponse::verificationStatus>("verificationStatus"),
    field<&AuthorizationResponse::aVSResultCode>("aVSResultCode"),
    field<&AuthorizationResponse::declineReasonCode>("declineReasonCode"),
    field<&AuthorizationResponse::declineReasonMessage>("declineReasonMessage"),
    field<&AuthorizationResponse::acquirerResponseCode>("acquirerResponseCode"),
    field<&AuthorizationResponse::acquirerResponseMessage>("acquirerResponseMessage"),
    field<&AuthorizationResponse::threeDSResponseStatus>("threeDSResponseStatus"),
    field<&AuthorizationResponse::threeDSResponseEnrolled>("threeDSResponseEnrolled"),
    field<&AuthorizationResponse::threeDSResponseECI>("threeDSResponseECI"),
};

// What follows "amount", up to "additionalData".
constexpr auto kHeadFields = RecordTable{
    field<&TransactionFields::timeStamp>("timeStamp"),
    field<&TransactionFields::actType>("transactionType"),
    field<&TransactionFields::curType>("curType"),
};

// What follows "additionalData".
constexpr auto kTailFields = RecordTable{
    field<&TransactionFields::destinationId>("destinationId"),
    field<&TransactionFields::user>("user", RecordOrEmptyField<User>::kCodec),
    field<&TransactionFields::billingAddress>("billingAddress",
                                              RecordOrEmptyField<Address>::kCodec),
    field<&TransactionFields::shippingAddress>("shippingAddress",
                                               RecordOrEmptyField<Address>::kCodec),
    field<&TransactionFields::payment>("payment", RecordOrEmptyField<Payment>::kCodec),
    field<&TransactionFields::authorizationResponse>(
        "authorizationResponse", RecordOrEmptyField<AuthorizationResponse>::kCodec),
    field<&TransactionFields::merchantDetails>("merchant_details",
                                               RecordOrEmptyField<MerchantDetails>::kCodec),
};

// Read before the table, whose "transactionType" then beats it; it is never written.
constexpr auto kReadFirst = RecordTable{field<&TransactionFields::actType>("actType")};

constexpr std::size_t kMostMembers = 3 + kHeadFields.size() + kTailFields.size();

}  // namespace

void MerchantDetails::writeJson(JsonSink& sink) const {
  giveJson(sink, recordToJson(*this, kMerchantFields));
}

MerchantDetails MerchantDetails::readJson(const JsonSource& json) {
  return recordFromJson(*JsonView(json), kMerchantFields);
}

void AuthorizationResponse::writeJson(JsonSink& sink) const {
  giveJson(sink, recordToJson(*this, kAuthorizationFields));
}

AuthorizationResponse AuthorizationResponse::readJson(const JsonSource& json) {
  return recordFromJson(*JsonView(json), kAuthorizationFields);
}

TransactionFields TransactionFields::of(std::chrono::duration<double> sinceEpoch,
                                        TransactionType actType, CurrencyCode curType,
                                        std::string userId, double amount,
                                        std::string destinationId, std::string_view paymentMethod) {
  return {.timeStamp = millisecondsFromSeconds(sinceEpoch.count()),
          .actType = actType,
          .curType = curType,
          .destinationId = std::move(destinationId),
          .amount = amount,
          .user = std::make_shared<User>(User{.userId = std::move(userId)}),
          .payment = std::make_shared<Payment>(
              Payment{.paymentMethod = PaymentMethodTypeToString::fromString(paymentMethod)})};
}

TransactionFields CheckPointContent::readTransaction(const JsonSource& json) {
  const JsonView view(json);
  TransactionFields fields;
  fields.amount = findNumber(*view, kAmountKey).value_or(0);
  readRecord(*view, fields, kReadFirst);
  readRecord(*view, fields, kHeadFields);
  readRecord(*view, fields, kTailFields);
  return fields;
}

void CheckPointContent::writeTransaction(JsonSink& sink, const TransactionFields& fields) const {
  Json object = openCheckPoint(*this, kMostMembers);
  const JsonDiscarder discarder(object);
  putMember(object, kAmountKey, fields.amount);
  writeRecord(object, fields, kHeadFields);
  putAdditionalData(object, *this);
  writeRecord(object, fields, kTailFields);
  giveJson(sink, std::move(object));
}

}  // namespace quorvance
