#include "quorvance/payment.h"

#include <gtest/gtest.h>

#include <utility>

#include "base/json_test_support.h"
#include "quorvance/add_payment_method.h"

namespace quorvance {
namespace {

template <class Record>
std::string rewrittenPaymentRecord(const Json& json) {
  return compactText(Record::fromJson(json).getJson());
}

std::string rewrittenMethod(const Json& json) {
  return compactText(AddPaymentMethod::fromJson(json)->getJson());
}

TEST(CreditCardDetailTest, WritesThePresentFieldsAndReadsThemBack) {
  EXPECT_EQ(compactText(CreditCardDetail{}.getJson()), "{}");
  const CreditCardDetail card{"t", "i", "424242", "0042", 2031, 1};
  const std::string text =
      "{\"bin\":\"424242\",\"lastFourDigit\":\"0042\",\"yearExpiryDate\":2031,"
      "\"monthExpiryDate\":1,\"card_token\":\"t\",\"cardId\":\"i\"}";
  EXPECT_EQ(compactText(card.getJson()), text);
  EXPECT_EQ(rewrittenPaymentRecord<CreditCardDetail>(parsedJson(text)), text);
}

TEST(BankAccountDetailsTest, WritesThePresentFieldsAndReadsThemBack) {
  EXPECT_EQ(compactText(BankAccountDetails{.bsb = "062"}.getJson()),
            "{\"bankAccountBsb\":\"062\"}");
  const std::string text =
      "{\"bankAccountNumber\":\"1\",\"bankAccountFullname\":\"A B\",\"bankAccountBsb\":\"2\"}";
  EXPECT_EQ(compactText(BankAccountDetails{"1", "A B", "2"}.getJson()), text);
  EXPECT_EQ(rewrittenPaymentRecord<BankAccountDetails>(parsedJson(text)), text);
}

TEST(PaymentTest, LeavesAbsentDetailsOutAndReadsItselfBack) {
  EXPECT_EQ(compactText(Payment{}.getJson()), "{}");
  const Payment payment{PaymentMethodType::ECHECK,
                        "p",
                        "F N",
                        "id",
                        std::make_shared<CreditCardDetail>(),
                        std::make_shared<BankAccountDetails>(BankAccountDetails{.number = "1"})};
  const std::string text =
      "{\"paymentMethod\":\"ECHECK\",\"processor\":\"p\",\"fullNameOnCard\":\"F N\","
      "\"paymentMethodId\":\"id\",\"creditCardDetail\":{},"
      "\"bankAccountDetails\":{\"bankAccountNumber\":\"1\"}}";
  EXPECT_EQ(compactText(payment.getJson()), text);
  EXPECT_EQ(rewrittenPaymentRecord<Payment>(parsedJson(text)), text);
  EXPECT_EQ(Payment::fromJson(parsedJson("{\"paymentMethod\":\"echeck\"}")).paymentMethod,
            PaymentMethodType::UNKNOWN);
}

TEST(PaymentTest, RecordsIgnoreOtherKindsUnderEveryKey) {
  const std::vector<std::pair<std::string, JsonKind>> cardKeys = {
      {"card_token", JsonKind::text},
      {"cardId", JsonKind::text},
      {"bin", JsonKind::text},
      {"lastFourDigit", JsonKind::text},
      {"yearExpiryDate", JsonKind::integer},
      {"monthExpiryDate", JsonKind::integer},
  };
  for (const auto& [key, kind] : cardKeys) {
    expectOtherKindsIgnored(key, kind, &rewrittenPaymentRecord<CreditCardDetail>);
  }
  for (const auto* key : {"bankAccountNumber", "bankAccountFullname", "bankAccountBsb"}) {
    expectOtherKindsIgnored(key, JsonKind::text, &rewrittenPaymentRecord<BankAccountDetails>);
  }
  const std::vector<std::pair<std::string, JsonKind>> paymentKeys = {
      {"paymentMethod", JsonKind::text},      {"processor", JsonKind::text},
      {"fullNameOnCard", JsonKind::text},     {"paymentMethodId", JsonKind::text},
      {"creditCardDetail", JsonKind::object}, {"bankAccountDetails", JsonKind::object},
  };
  for (const auto& [key, kind] : paymentKeys) {
    expectOtherKindsIgnored(key, kind, &rewrittenPaymentRecord<Payment>);
  }
}

TEST(AddPaymentMethodTest, AlwaysWritesItsThreeRecords) {
  const AddPaymentMethod bare(nullptr, nullptr, nullptr);
  EXPECT_EQ(compactText(bare.getJson()),
            "{\"checkpoint_type\":\"ADD_PAYMENT_METHOD\",\"payment\":{},\"billingAddress\":{},"
            "\"user\":{}}");
}

TEST(AddPaymentMethodTest, BuildsItsRecordsFromAnIdentifierAndAToken) {
  const AddPaymentMethod method("U", "T");
  EXPECT_EQ(compactText(method.getJson()),
            "{\"checkpoint_type\":\"ADD_PAYMENT_METHOD\","
            "\"payment\":{\"creditCardDetail\":{\"card_token\":\"T\"}},\"billingAddress\":{},"
            "\"user\":{\"user_id\":\"U\",\"isEmailVerified\":\"UNKNOWN\","
            "\"isPhoneUserVerified\":\"UNKNOWN\",\"isKYCVerified\":\"UNKNOWN\","
            "\"user_address\":{}}}");
}

TEST(AddPaymentMethodTest, StartsFromTheBaseSoThatItsDataComesFirstAndItsTypeFollows) {
  AddPaymentMethod method(nullptr, nullptr, std::make_shared<Address>(Address{.city = "c"}));
  method.setAdditionalData(parsedJson("{\"long enough for the heap\":[\"and this one as well\"]}"));
  const std::string tail =
      ",\"additionalData\":{\"long enough for the heap\":[\"and this one as well\"]},"
      "\"payment\":{},\"billingAddress\":{\"city\":\"c\"},\"user\":{}}";
  EXPECT_EQ(compactText(method.getJson()), "{\"checkpoint_type\":\"ADD_PAYMENT_METHOD\"" + tail);
  EXPECT_EQ(compactText(method.getJson()), "{\"checkpoint_type\":\"ADD_PAYMENT_METHOD\"" + tail);
  EXPECT_NE(method.additionalData(), nullptr);
  method.setType(CheckPointType::UPDATE_DETAILS);
  EXPECT_EQ(compactText(method.getJson()), "{\"checkpoint_type\":\"UPDATE_DETAILS\"" + tail);
}

TEST(AddPaymentMethodTest, ReadsItselfBackAndIgnoresOtherKinds) {
  const std::string text =
      "{\"checkpoint_type\":\"ADD_PAYMENT_METHOD\",\"additionalData\":{\"a\":1},"
      "\"payment\":{\"processor\":\"p\"},\"billingAddress\":{\"city\":\"c\"},\"user\":{"
      "\"isEmailVerified\":\"UNKNOWN\",\"isPhoneUserVerified\":\"UNKNOWN\","
      "\"isKYCVerified\":\"UNKNOWN\",\"user_address\":{}}}";
  EXPECT_EQ(rewrittenMethod(parsedJson(text)), text);
  for (const auto* key : {"payment", "billingAddress", "user", "additionalData"}) {
    expectOtherKindsIgnored(key, JsonKind::object, &rewrittenMethod);
  }
  EXPECT_EQ(AddPaymentMethod::fromJson(parsedJson("{\"checkpoint_type\":\"LOGIN\"}"))->type(),
            CheckPointType::ADD_PAYMENT_METHOD);
}

}  // namespace
}  // namespace quorvance
