#include "quorvance/user.h"

#include <gtest/gtest.h>

#include "base/json_test_support.h"

namespace quorvance {
namespace {

std::string rewrittenUser(const Json& json) { return compactText(User::fromJson(json).getJson()); }

std::string rewrittenAddress(const Json& json) {
  return compactText(Address::fromJson(json).getJson());
}

TEST(AddressTest, WritesPresentFieldsOnlyInOrderAndExactly) {
  EXPECT_EQ(compactText(Address{.city = ""}.getJson()), R"({"city":""})");
  constexpr std::string_view kText =
      R"({"firstName":"f","lastName":"l","addressLine1":"1","addressLine2":"2","city":" C ",)"
      R"("state":"s","country":"co","postalCode":"00","phoneNumber":"+1"})";
  const Address whole{"f", "l", "1", "2", " C ", "s", "co", "00", "+1"};
  EXPECT_EQ(compactText(whole.getJson()), kText);
  expectRecordText(kText, &rewrittenAddress);
}

TEST(UserTest, WritesAllKeysInOrderOrTheNeutralOnesAndReadsThemBack) {
  EXPECT_EQ(compactText(User{}.getJson()),
            R"({"isEmailVerified":"UNKNOWN","isPhoneUserVerified":"UNKNOWN",)"
            R"("isKYCVerified":"UNKNOWN","user_address":{}})");
  const User user{.userId = "u",
                  .email = "e",
                  .isEmailVerified = VerificationType::VERIFIED,
                  .phoneUser = "p",
                  .isPhoneVerified = VerificationType::NOT_VERIFIED,
                  .address = std::make_shared<Address>(Address{.city = "c"}),
                  .isKycVerified = VerificationType::UNKNOWN};
  constexpr std::string_view kText =
      R"({"user_id":"u","email":"e","isEmailVerified":"VERIFIED","phoneUser":"p",)"
      R"("isPhoneUserVerified":"NOT_VERIFIED","isKYCVerified":"UNKNOWN",)"
      R"("user_address":{"city":"c"}})";
  EXPECT_EQ(compactText(user.getJson()), kText);
  expectRecordText(kText, &rewrittenUser);
}

TEST(UserTest, TellsUnknownAndNeutralFromAbsent) {
  User user = User::fromJson(parsedJson(R"({"isKYCVerified":"verified","user_address":{}})"));
  EXPECT_EQ(user.isKycVerified, VerificationType::UNKNOWN);
  EXPECT_EQ(user.isEmailVerified, std::nullopt);
  EXPECT_NE(user.address, nullptr);
  user = User::fromJson(
      parsedJson(R"({"isKYCVerified":1,"isPhoneVerified":"VERIFIED","user_address":"x"})"));
  EXPECT_EQ(user.isKycVerified, std::nullopt);
  EXPECT_EQ(user.isPhoneVerified, std::nullopt);
  EXPECT_EQ(user.address, nullptr);
}

}  // namespace
}  // namespace quorvance
