#include "quorvance/user.h"

#include <gtest/gtest.h>

#include <utility>

#include "base/json_test_support.h"

namespace quorvance {
namespace {

constexpr std::string_view kNeutralUser =
    "{\"isEmailVerified\":\"UNKNOWN\",\"isPhoneUserVerified\":\"UNKNOWN\","
    "\"isKYCVerified\":\"UNKNOWN\",\"user_address\":{}}";

std::string rewrittenUser(const Json& json) { return compactText(User::fromJson(json).getJson()); }

std::string rewrittenAddress(const Json& json) {
  return compactText(Address::fromJson(json).getJson());
}

TEST(AddressTest, WritesPresentFieldsOnlyInOrderAndExactly) {
  EXPECT_EQ(compactText(Address{}.getJson()), "{}");
  EXPECT_EQ(compactText(Address{.city = ""}.getJson()), "{\"city\":\"\"}");
  const Address whole{"f", "l", "1", "2", " C ", "s", "co", "00", "+1"};
  const std::string text =
      "{\"firstName\":\"f\",\"lastName\":\"l\",\"addressLine1\":\"1\",\"addressLine2\":\"2\","
      "\"city\":\" C \",\"state\":\"s\",\"country\":\"co\",\"postalCode\":\"00\","
      "\"phoneNumber\":\"+1\"}";
  EXPECT_EQ(compactText(whole.getJson()), text);
  EXPECT_EQ(rewrittenAddress(parsedJson(text)), text);
}

TEST(AddressTest, IgnoresWhatIsNoText) {
  for (const std::string_view key : {"firstName", "lastName", "addressLine1", "addressLine2",
                                     "city", "state", "country", "postalCode", "phoneNumber"}) {
    expectOtherKindsIgnored(key, JsonKind::text, &rewrittenAddress);
  }
  EXPECT_EQ(rewrittenAddress(parsedJson("[\"city\"]")), "{}");
}

TEST(UserTest, WritesNeutralValuesForVerificationsAndAddressOnly) {
  EXPECT_EQ(compactText(User{}.getJson()), kNeutralUser);
  EXPECT_EQ(compactText(User{.userId = "u1"}.getJson()),
            "{\"user_id\":\"u1\"," + std::string(kNeutralUser.substr(1)));
}

TEST(UserTest, WritesAllKeysInOrderAndReadsThemBack) {
  const User user{.userId = "u",
                  .email = "e",
                  .isEmailVerified = VerificationType::VERIFIED,
                  .phoneUser = "p",
                  .isPhoneVerified = VerificationType::NOT_VERIFIED,
                  .address = std::make_shared<Address>(Address{.city = "c"}),
                  .isKycVerified = VerificationType::UNKNOWN};
  const std::string text =
      "{\"user_id\":\"u\",\"email\":\"e\",\"isEmailVerified\":\"VERIFIED\",\"phoneUser\":\"p\","
      "\"isPhoneUserVerified\":\"NOT_VERIFIED\",\"isKYCVerified\":\"UNKNOWN\","
      "\"user_address\":{\"city\":\"c\"}}";
  EXPECT_EQ(compactText(user.getJson()), text);
  EXPECT_EQ(rewrittenUser(parsedJson(text)), text);
}

TEST(UserTest, ReadsItsOwnNeutralValuesAsValues) {
  const User user = User::fromJson(parsedJson(kNeutralUser));
  EXPECT_EQ(user.isEmailVerified, VerificationType::UNKNOWN);
  EXPECT_EQ(user.isKycVerified, VerificationType::UNKNOWN);
  ASSERT_NE(user.address, nullptr);
  EXPECT_EQ(compactText(user.address->getJson()), "{}");
}

TEST(UserTest, TellsAnUnknownWordFromAnotherKind) {
  for (const std::string_view key : {"isEmailVerified", "isPhoneUserVerified", "isKYCVerified"}) {
    Json json = Json::object();
    json[std::string(key)] = "verified";
    User user = User::fromJson(json);
    EXPECT_EQ(user.isEmailVerified.has_value() + user.isPhoneVerified.has_value() +
                  user.isKycVerified.has_value(),
              1)
        << key;
    json[std::string(key)] = 1;
    user = User::fromJson(json);
    EXPECT_FALSE(user.isEmailVerified || user.isPhoneVerified || user.isKycVerified) << key;
  }
  EXPECT_EQ(User::fromJson(parsedJson("{\"isKYCVerified\":\"x\"}")).isKycVerified,
            VerificationType::UNKNOWN);
  EXPECT_EQ(User::fromJson(parsedJson("{\"isPhoneVerified\":\"VERIFIED\"}")).isPhoneVerified,
            std::nullopt);
}

TEST(UserTest, IgnoresOtherKindsUnderEveryKey) {
  const std::vector<std::pair<std::string, JsonKind>> keys = {
      {"user_id", JsonKind::text},        {"email", JsonKind::text},
      {"phoneUser", JsonKind::text},      {"isEmailVerified", JsonKind::text},
      {"isKYCVerified", JsonKind::text},  {"isPhoneUserVerified", JsonKind::text},
      {"user_address", JsonKind::object},
  };
  for (const auto& [key, kind] : keys) expectOtherKindsIgnored(key, kind, &rewrittenUser);
  EXPECT_EQ(User::fromJson(parsedJson("{\"user_address\":\"x\"}")).address, nullptr);
}

}  // namespace
}  // namespace quorvance
