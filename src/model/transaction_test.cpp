#include "quorvance/transaction.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "base/json_test_support.h"
#include "model/transaction_update.h"

namespace quorvance {
namespace {

constexpr std::string_view kSixEmptyRecords =
    "\"user\":{},\"billingAddress\":{},\"shippingAddress\":{},\"payment\":{},"
    "\"authorizationResponse\":{},\"merchant_details\":{}}";

std::string rewrittenTransaction(const Json& json) {
  return compactText(Transaction::fromJson(json)->getJson());
}

Transaction transactionAt(double seconds) {
  return Transaction(std::chrono::duration<double>(seconds), TransactionType::DEPOSIT,
                     CurrencyCode::EUR, "u", 12.5, "d", "ECHECK");
}

TEST(TransactionTest, WithoutOptionalFieldsWritesTypeAmountAndSixEmptyRecords) {
  EXPECT_EQ(compactText(Transaction({}).getJson()),
            "{\"checkpoint_type\":\"TRANSACTION\",\"amount\":0.0," + std::string(kSixEmptyRecords));
}

TEST(TransactionTest, WritesAllKeysInOrderAndReadsThemBack) {
  const std::string address = "{\"city\":\"b\"}";
  Transaction transaction(
      {.timeStamp = -1,
       .actType = TransactionType::BILL_PAYMENT,
       .curType = CurrencyCode::XAG,
       .destinationId = "",
       .amount = -0.1,
       .user = std::make_shared<User>(User{.isKycVerified = VerificationType::VERIFIED}),
       .billingAddress = std::make_shared<Address>(Address{.city = "b"}),
       .shippingAddress = std::make_shared<Address>(Address{.city = "s"}),
       .payment = std::make_shared<Payment>(Payment{.processor = "p"}),
       .authorizationResponse = std::make_shared<AuthorizationResponse>(
           AuthorizationResponse{"1", "2", "3", "4", "5", "6", "7", "8", "9"}),
       .merchantDetails = std::make_shared<MerchantDetails>(
           MerchantDetails{"n", "c", std::make_shared<Address>(Address{.city = "b"})})});
  transaction.setAdditionalData(parsedJson("{\"a\":1}"));
  const std::string text =
      "{\"checkpoint_type\":\"TRANSACTION\",\"amount\":-0.1,\"timeStamp\":-1,"
      "\"transactionType\":\"BILL_PAYMENT\",\"curType\":\"XAG\",\"additionalData\":{\"a\":1},"
      "\"destinationId\":\"\",\"user\":{\"isEmailVerified\":\"UNKNOWN\","
      "\"isPhoneUserVerified\":\"UNKNOWN\",\"isKYCVerified\":\"VERIFIED\",\"user_address\":{}},"
      "\"billingAddress\":{\"city\":\"b\"},\"shippingAddress\":{\"city\":\"s\"},"
      "\"payment\":{\"processor\":\"p\"},\"authorizationResponse\":{\"verificationStatus\":\"1\","
      "\"aVSResultCode\":\"2\",\"declineReasonCode\":\"3\",\"declineReasonMessage\":\"4\","
      "\"acquirerResponseCode\":\"5\",\"acquirerResponseMessage\":\"6\","
      "\"threeDSResponseStatus\":\"7\",\"threeDSResponseEnrolled\":\"8\","
      "\"threeDSResponseECI\":\"9\"},\"merchant_details\":{\"merchant_name\":\"n\","
      "\"merchant_code\":\"c\",\"merchant_address\":" +
      address + "}}";
  EXPECT_EQ(compactText(transaction.getJson()), text);
  EXPECT_EQ(rewrittenTransaction(parsedJson(text)), text);
}

TEST(TransactionTest, FromADateKnowsTheUserByIdentifierAndThePaymentByMethod) {
  EXPECT_EQ(compactText(transactionAt(1.5).getJson()),
            "{\"checkpoint_type\":\"TRANSACTION\",\"amount\":12.5,\"timeStamp\":1500,"
            "\"transactionType\":\"DEPOSIT\",\"curType\":\"EUR\",\"destinationId\":\"d\","
            "\"user\":{\"user_id\":\"u\",\"isEmailVerified\":\"UNKNOWN\","
            "\"isPhoneUserVerified\":\"UNKNOWN\",\"isKYCVerified\":\"UNKNOWN\","
            "\"user_address\":{}},\"billingAddress\":{},\"shippingAddress\":{},"
            "\"payment\":{\"paymentMethod\":\"ECHECK\"},\"authorizationResponse\":{},"
            "\"merchant_details\":{}}");
  const Transaction unknown(std::chrono::seconds(-1), TransactionType::LOAD, CurrencyCode::USD, "",
                            0, "", "echeck");
  EXPECT_EQ(unknown.fields().payment->paymentMethod, PaymentMethodType::UNKNOWN);
  EXPECT_EQ(unknown.fields().timeStamp, -1000);
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
  EXPECT_EQ(typeRead("{\"actType\":\"DEPOSIT\",\"transactionType\":\"LOAD\"}"),
            TransactionType::LOAD);
  EXPECT_EQ(typeRead("{\"transactionType\":\"LOAD\",\"actType\":\"DEPOSIT\"}"),
            TransactionType::LOAD);
  EXPECT_EQ(typeRead("{\"actType\":\"DEPOSIT\",\"transactionType\":\"load\"}"),
            TransactionType::P2P);
  EXPECT_EQ(typeRead("{\"actType\":\"DEPOSIT\",\"transactionType\":6}"), TransactionType::DEPOSIT);
  EXPECT_EQ(typeRead("{\"transactionType\":\"deposit\"}"), TransactionType::P2P);
  EXPECT_EQ(typeRead("{\"actType\":6}"), std::nullopt);
}

TEST(TransactionTest, ReadsUnknownCurrenciesAsTheFallback) {
  const auto currencyRead = [](std::string_view text) {
    return Transaction::fromJson(parsedJson(text))->fields().curType;
  };
  EXPECT_EQ(currencyRead("{\"curType\":\"EUR\"}"), CurrencyCode::EUR);
  EXPECT_EQ(currencyRead("{\"curType\":\"eur\"}"), CurrencyCode::USD);
  EXPECT_EQ(currencyRead("{\"curType\":1}"), std::nullopt);
}

TEST(TransactionTest, IgnoresOtherKindsUnderEveryKey) {
  const std::vector<std::pair<std::string, JsonKind>> keys = {
      {"amount", JsonKind::number},
      {"timeStamp", JsonKind::integer},
      {"actType", JsonKind::text},
      {"transactionType", JsonKind::text},
      {"curType", JsonKind::text},
      {"destinationId", JsonKind::text},
      {"user", JsonKind::object},
      {"billingAddress", JsonKind::object},
      {"shippingAddress", JsonKind::object},
      {"payment", JsonKind::object},
      {"authorizationResponse", JsonKind::object},
      {"merchant_details", JsonKind::object},
      {"additionalData", JsonKind::object},
      {"checkpoint_type", JsonKind::text},
  };
  for (const auto& [key, kind] : keys) expectOtherKindsIgnored(key, kind, &rewrittenTransaction);
  const auto whole = Transaction::fromJson(parsedJson("{\"amount\":7,\"checkpoint_type\":\"X\"}"));
  EXPECT_EQ(whole->amount(), 7.0);
  EXPECT_EQ(whole->type(), CheckPointType::TRANSACTION);
}

TEST(TransactionTest, RecordsOfTheCounterpartIgnoreOtherKinds) {
  const auto merchant = [](const Json& json) {
    return compactText(MerchantDetails::fromJson(json).getJson());
  };
  expectOtherKindsIgnored("merchant_name", JsonKind::text, merchant);
  expectOtherKindsIgnored("merchant_code", JsonKind::text, merchant);
  expectOtherKindsIgnored("merchant_address", JsonKind::object, merchant);
  for (const auto* key : {"verificationStatus", "aVSResultCode", "declineReasonCode",
                          "declineReasonMessage", "acquirerResponseCode", "threeDSResponseECI"}) {
    expectOtherKindsIgnored(key, JsonKind::text, [](const Json& json) {
      return compactText(AuthorizationResponse::fromJson(json).getJson());
    });
  }
}

TEST(TransactionTest, AmountAndDestinationMayChangeAfterwards) {
  Transaction transaction({.destinationId = "d", .amount = 1});
  transaction.setAmount(1e16);
  transaction.setDestinationId(std::nullopt);
  EXPECT_EQ(
      compactText(transaction.getJson()),
      "{\"checkpoint_type\":\"TRANSACTION\",\"amount\":1e+16," + std::string(kSixEmptyRecords));
  transaction.setAmount(std::nan(""));
  EXPECT_FALSE(writeJson(transaction.getJson()).has_value());
}

TEST(TransactionUpdateTest, LeavesOnlyTheTransactionIdentifierOut) {
  EXPECT_EQ(compactText(TransactionUpdate{"r", std::nullopt, CheckPointStatus::DENIED}.getJson()),
            "{\"requestID\":\"r\",\"status\":\"DENIED\"}");
  EXPECT_EQ(compactText(TransactionUpdate{"", "t", CheckPointStatus::CANCELLED}.getJson()),
            "{\"requestID\":\"\",\"transactionID\":\"t\",\"status\":\"CANCELLED\"}");
}

}  // namespace
}  // namespace quorvance
