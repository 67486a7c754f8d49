#include "quorvance/transaction.h"

#include <gtest/gtest.h>

#include <cmath>

#include "base/json_test_support.h"
#include "model/transaction_update.h"

namespace quorvance {
namespace {

constexpr std::string_view kSixEmptyRecords =
    R"("user":{},"billingAddress":{},"shippingAddress":{},"payment":{},)"
    R"("authorizationResponse":{},"merchant_details":{}})";

Transaction transactionAt(double seconds) {
  return Transaction(std::chrono::duration<double>(seconds), TransactionType::DEPOSIT,
                     CurrencyCode::EUR, "u", 12.5, "d", "ECHECK");
}

TEST(TransactionTest, WithoutOptionalFieldsWritesTypeAmountAndSixEmptyRecords) {
  Transaction transaction({.destinationId = "d"});
  transaction.setDestinationId(std::nullopt);
  const std::string head = R"({"checkpoint_type":"TRANSACTION","amount":)";
  EXPECT_EQ(compactText(transaction.getJson()), head + "0.0," + std::string(kSixEmptyRecords));
  transaction.setAmount(1e16);
  EXPECT_EQ(compactText(transaction.getJson()), head + "1e+16," + std::string(kSixEmptyRecords));
  transaction.setAmount(std::nan(""));
  EXPECT_FALSE(writeJson(transaction.getJson()).has_value());
}

TEST(TransactionTest, ReadsItselfBackInOrderAndIgnoresOtherKinds) {
  expectRecordText(
      R"({"checkpoint_type":"TRANSACTION","amount":-0.1,"timeStamp":-1,)"
      R"("transactionType":"BILL_PAYMENT","curType":"XAG","additionalData":{"a":1},)"
      R"("destinationId":"","user":{"isEmailVerified":"UNKNOWN","isPhoneUserVerified":"UNKNOWN",)"
      R"("isKYCVerified":"VERIFIED","user_address":{}},"billingAddress":{"city":"b"},)"
      R"("shippingAddress":{"city":"s"},"payment":{"processor":"p"},)"
      R"("authorizationResponse":{"verificationStatus":"1"},)"
      R"("merchant_details":{"merchant_name":"n"}})",
      [](const Json& json) { return compactText(Transaction::fromJson(json)->getJson()); });
  const auto read = Transaction::fromJson(parsedJson(R"({"checkpoint_type":"LOGIN"})"));
  EXPECT_EQ(read->type(), CheckPointType::TRANSACTION);
}

TEST(TransactionTest, RecordsOfTheCounterpartReadThemselvesBack) {
  expectRecordText(
      R"({"merchant_name":"n","merchant_code":"c","merchant_address":{"city":"m"}})",
      [](const Json& json) { return compactText(MerchantDetails::fromJson(json).getJson()); });
  constexpr std::string_view kAnswer =
      R"({"verificationStatus":"1","aVSResultCode":"2","declineReasonCode":"3",)"
      R"("declineReasonMessage":"4","acquirerResponseCode":"5","acquirerResponseMessage":"6",)"
      R"("threeDSResponseStatus":"7","threeDSResponseEnrolled":"8","threeDSResponseECI":"9"})";
  const AuthorizationResponse answer{"1", "2", "3", "4", "5", "6", "7", "8", "9"};
  EXPECT_EQ(compactText(answer.getJson()), kAnswer);
  expectRecordText(kAnswer, [](const Json& json) {
    return compactText(AuthorizationResponse::fromJson(json).getJson());
  });
}

TEST(TransactionTest, FromADateKnowsTheUserByIdentifierAndThePaymentByMethod) {
  EXPECT_EQ(compactText(transactionAt(1.5).getJson()),
            R"({"checkpoint_type":"TRANSACTION","amount":12.5,"timeStamp":1500,)"
            R"("transactionType":"DEPOSIT","curType":"EUR","destinationId":"d",)"
            R"("user":{"user_id":"u","isEmailVerified":"UNKNOWN",)"
            R"("isPhoneUserVerified":"UNKNOWN","isKYCVerified":"UNKNOWN","user_address":{}},)"
            R"("billingAddress":{},"shippingAddress":{},"payment":{"paymentMethod":"ECHECK"},)"
            R"("authorizationResponse":{},"merchant_details":{}})");
  const Transaction unknown(std::chrono::seconds(-1), TransactionType::LOAD, CurrencyCode::USD, "",
                            0, "", "echeck");
  EXPECT_EQ(unknown.fields().payment->paymentMethod, PaymentMethodType::UNKNOWN);
}

TEST(TransactionDeathTest, ADateBeyondSixtyFourBitsStopsTheProcess) {
  for (const double seconds : {std::nan(""), HUGE_VAL, 9.3e15, -9.3e15}) {
    EXPECT_DEATH(transactionAt(seconds), "fatal") << seconds;
  }
}

TEST(TransactionTest, ReadsItsTypeUnderTwoKeysOfWhichTheWireKeyWins) {
  const auto typeRead = [](std::string_view text) {
    return Transaction::fromJson(parsedJson(text))->fields().actType;
  };
  EXPECT_EQ(typeRead(R"({"transactionType":"LOAD","actType":"DEPOSIT"})"), TransactionType::LOAD);
  EXPECT_EQ(typeRead(R"({"actType":"DEPOSIT","transactionType":"load"})"), TransactionType::P2P);
  EXPECT_EQ(typeRead(R"({"actType":"DEPOSIT","transactionType":6})"), TransactionType::DEPOSIT);
  EXPECT_EQ(typeRead(R"({"actType":"deposit"})"), TransactionType::P2P);
  EXPECT_EQ(typeRead(R"({"actType":6})"), std::nullopt);
  EXPECT_EQ(Transaction::fromJson(parsedJson(R"({"curType":"eur"})"))->fields().curType,
            CurrencyCode::USD);
}

TEST(TransactionUpdateTest, LeavesOnlyTheTransactionIdentifierOut) {
  TransactionUpdate update{"", "t", CheckPointStatus::CANCELLED};
  EXPECT_EQ(compactText(update.getJson()),
            R"({"requestID":"","transactionID":"t","status":"CANCELLED"})");
  update.transactionID.reset();
  EXPECT_EQ(compactText(update.getJson()), R"({"requestID":"","status":"CANCELLED"})");
}

}  // namespace
}  // namespace quorvance
