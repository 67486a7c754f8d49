#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "quorvance/check_point.h"
#include "quorvance/currency_code.h"
#include "quorvance/payment.h"
#include "quorvance/transaction_type.h"
#include "quorvance/user.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// Who is paid. Absent fields are left out.
struct MerchantDetails {
  std::optional<std::string> merchantName{};
  std::optional<std::string> merchantCode{};
  std::shared_ptr<const Address> merchantAddress{};

  /// Never fails: a key of another type is ignored.
  template <class Value = Json>
  static MerchantDetails fromJson(const std::type_identity_t<Value>& json) {
    return readJson(jsonSource(json));
  }
  static MerchantDetails readJson(const JsonSource& json);
  template <class Value = Json>
  Value getJson() const {
    return writtenJson<Value>([this](JsonSink& sink) { writeJson(sink); });
  }
  void writeJson(JsonSink& sink) const;
};

/// The card network's answer as the host received it. Absent fields are left out.
struct AuthorizationResponse {
  std::optional<std::string> verificationStatus{};
  /// Address verification.
  std::optional<std::string> aVSResultCode{};
  std::optional<std::string> declineReasonCode{};
  std::optional<std::string> declineReasonMessage{};
  std::optional<std::string> acquirerResponseCode{};
  std::optional<std::string> acquirerResponseMessage{};
  /// EMV 3-D Secure.
  std::optional<std::string> threeDSResponseStatus{};
  std::optional<std::string> threeDSResponseEnrolled{};
  std::optional<std::string> threeDSResponseECI{};

  /// Never fails: a key of another type is ignored.
  template <class Value = Json>
  static AuthorizationResponse fromJson(const std::type_identity_t<Value>& json) {
    return readJson(jsonSource(json));
  }
  static AuthorizationResponse readJson(const JsonSource& json);
  template <class Value = Json>
  Value getJson() const {
    return writtenJson<Value>([this](JsonSink& sink) { writeJson(sink); });
  }
  void writeJson(JsonSink& sink) const;
};

/// What a transaction is made from; every label may be left out but the amount, which is then 0.
struct TransactionFields {
  /// Milliseconds since 1970.
  std::optional<std::int64_t> timeStamp{};
  std::optional<TransactionType> actType{};
  std::optional<CurrencyCode> curType{};
  /// The counterpart: payee, account or phone number.
  std::optional<std::string> destinationId{};
  double amount = 0;
  std::shared_ptr<const User> user{};
  std::shared_ptr<const Address> billingAddress{};
  std::shared_ptr<const Address> shippingAddress{};
  std::shared_ptr<const Payment> payment{};
  std::shared_ptr<const AuthorizationResponse> authorizationResponse{};
  std::shared_ptr<const MerchantDetails> merchantDetails{};

  /// Those that Transaction makes of its seven values.
  static TransactionFields of(std::chrono::duration<double> sinceEpoch, TransactionType actType,
                              CurrencyCode curType, std::string userId, double amount,
                              std::string destinationId, std::string_view paymentMethod);
};

}  // namespace quorvance

#pragma GCC visibility pop

namespace quorvance {
inline namespace QUORVANCE_JSON_NAMESPACE {

/// A purchase, a transfer, a deposit: Transaction({.amount = 12.5, .shippingAddress = address}).
/// The six records are written as {} when absent; an amount that is not finite makes a body that
/// cannot be sent.
class Transaction : public CheckPoint {
 public:
  explicit Transaction(TransactionFields fields)
      : CheckPoint(CheckPointType::TRANSACTION), fields_(std::move(fields)) {}
  /// A user of whom only the identifier is known and a payment of which only the method is; an
  /// unknown method reads as UNKNOWN. A date that does not fit 64-bit milliseconds is a programming
  /// error and stops the process.
  Transaction(std::chrono::duration<double> sinceEpoch, TransactionType actType,
              CurrencyCode curType, std::string userId, double amount, std::string destinationId,
              std::string_view paymentMethod)
      : Transaction(TransactionFields::of(sinceEpoch, actType, curType, std::move(userId), amount,
                                          std::move(destinationId), paymentMethod)) {}

  /// Never fails: a key of another type is ignored, unknown words read as the fallbacks,
  /// "checkpoint_type" is not read. "transactionType" beats "actType".
  static std::unique_ptr<Transaction> fromJson(const Json& json) {
    return rebuilt<Transaction>(json, CheckPointContent::readTransaction(jsonSource(json)));
  }
  Json getJson() const override {
    return contentOf(CheckPointType::TRANSACTION, [this](const auto& content, JsonSink& sink) {
      content.writeTransaction(sink, fields_);
    });
  }

  const TransactionFields& fields() const { return fields_; }
  double amount() const { return fields_.amount; }
  void setAmount(double amount) { fields_.amount = amount; }
  const std::optional<std::string>& destinationId() const { return fields_.destinationId; }
  void setDestinationId(std::optional<std::string> destinationId) {
    fields_.destinationId = std::move(destinationId);
  }

 private:
  TransactionFields fields_;
};

}  // namespace QUORVANCE_JSON_NAMESPACE
}  // namespace quorvance
