#include "quorvance/payment.h"

#include <gtest/gtest.h>

#include "base/json_test_support.h"
#include "quorvance/add_payment_method.h"

namespace quorvance {
namespace {

template <class Record>
std::string rewrittenPaymentRecord(const Json& json) {
  return compactText(Record::fromJson(json).getJson());
}

TEST(PaymentTest, DetailsWriteThePresentFieldsAndReadThemBack) {
  constexpr std::string_view kCard =
      R"({"bin":"424242","lastFourDigit":"0042","yearExpiryDate":2031,"monthExpiryDate":1,)"
      R"("card_token":"t","cardId":"i"})";
  EXPECT_EQ(compactText(CreditCardDetail{"t", "i", "424242", "0042", 2031, 1}.getJson()), kCard);
  expectRecordText(kCard, &rewrittenPaymentRecord<CreditCardDetail>);
  constexpr std::string_view kBank =
      R"({"bankAccountNumber":"1","bankAccountFullname":"A B","bankAccountBsb":"2"})";
  EXPECT_EQ(compactText(BankAccountDetails{"1", "A B", "2"}.getJson()), kBank);
  expectRecordText(kBank, &rewrittenPaymentRecord<BankAccountDetails>);
}

TEST(PaymentTest, LeavesAbsentDetailsOutAndReadsItselfBack) {
  expectRecordText(R"({"paymentMethod":"ECHECK","processor":"p","fullNameOnCard":"F N",)"
                   R"("paymentMethodId":"id","creditCardDetail":{},)"
                   R"("bankAccountDetails":{"bankAccountNumber":"1"}})",
                   &rewrittenPaymentRecord<Payment>);
  EXPECT_EQ(Payment::fromJson(parsedJson(R"({"paymentMethod":"echeck"})")).paymentMethod,
            PaymentMethodType::UNKNOWN);
}

TEST(AddPaymentMethodTest, BuildsItsRecordsFromAnIdentifierAndAToken) {
  EXPECT_EQ(compactText(AddPaymentMethod("U", "T").getJson()),
            R"({"checkpoint_type":"ADD_PAYMENT_METHOD",)"
            R"("payment":{"creditCardDetail":{"card_token":"T"}},"billingAddress":{},)"
            R"("user":{"user_id":"U","isEmailVerified":"UNKNOWN",)"
            R"("isPhoneUserVerified":"UNKNOWN","isKYCVerified":"UNKNOWN","user_address":{}}})");
}

TEST(AddPaymentMethodTest, StartsFromTheBaseSoThatItsDataComesFirstAndItsTypeFollows) {
  AddPaymentMethod method(nullptr, nullptr, std::make_shared<Address>(Address{.city = "c"}));
  const std::string tail = R"("payment":{},"billingAddress":{"city":"c"},"user":{}})";
  EXPECT_EQ(compactText(method.getJson()), R"({"checkpoint_type":"ADD_PAYMENT_METHOD",)" + tail);
  method.setAdditionalData(parsedJson(R"({"a":1})"));
  method.setType(CheckPointType::UPDATE_DETAILS);
  EXPECT_EQ(compactText(method.getJson()),
            R"({"checkpoint_type":"UPDATE_DETAILS","additionalData":{"a":1},)" + tail);
}

TEST(AddPaymentMethodTest, ReadsItselfBackAndIgnoresOtherKinds) {
  expectRecordText(
      R"({"checkpoint_type":"ADD_PAYMENT_METHOD","additionalData":{"a":1},)"
      R"("payment":{"processor":"p"},"billingAddress":{"city":"c"},)"
      R"("user":{"isEmailVerified":"UNKNOWN","isPhoneUserVerified":"UNKNOWN",)"
      R"("isKYCVerified":"UNKNOWN","user_address":{}}})",
      [](const Json& json) { return compactText(AddPaymentMethod::fromJson(json)->getJson()); });
  EXPECT_EQ(AddPaymentMethod::fromJson(parsedJson(R"({"checkpoint_type":"LOGIN"})"))->type(),
            CheckPointType::ADD_PAYMENT_METHOD);
}

}  // namespace
}  // namespace quorvance
