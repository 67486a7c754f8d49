#include "quorvance/account_check_points.h"

#include <gtest/gtest.h>

#include "base/json_test_support.h"

namespace quorvance {
namespace {

constexpr std::string_view kWrittenUser =
    "{\"user_id\":\"u\",\"isEmailVerified\":\"UNKNOWN\",\"isPhoneUserVerified\":\"UNKNOWN\","
    "\"isKYCVerified\":\"UNKNOWN\",\"user_address\":{}}";

std::shared_ptr<const User> accountUser() { return std::make_shared<User>(User{.userId = "u"}); }

TEST(AccountCheckPointsTest, LaunchAndGeneralDiscardTheUserIdentifier) {
  EXPECT_EQ(compactText(Launch("u1").getJson()), "{\"checkpoint_type\":\"LAUNCH\"}");
  EXPECT_EQ(compactText(General("u1").getJson()), "{\"checkpoint_type\":\"GENERAL\"}");
  General general("u1");
  general.setAdditionalData(parsedJson("{\"a\":{}}"));
  EXPECT_EQ(compactText(general.getJson()),
            "{\"checkpoint_type\":\"GENERAL\",\"additionalData\":{\"a\":{}}}");
}

TEST(AccountCheckPointsTest, AnAbsentUserIsWrittenAsAnEmptyObject) {
  const std::string tail = "\",\"user\":{}}";
  EXPECT_EQ(compactText(Login(nullptr).getJson()), "{\"checkpoint_type\":\"LOGIN" + tail);
  EXPECT_EQ(compactText(Register(nullptr).getJson()), "{\"checkpoint_type\":\"REGISTER" + tail);
  EXPECT_EQ(compactText(UpdateUserInfo(nullptr).getJson()),
            "{\"checkpoint_type\":\"UPDATE_USER_INFO" + tail);
  EXPECT_EQ(compactText(PasswordChange(nullptr).getJson()),
            "{\"checkpoint_type\":\"PASSWORD_CHANGE" + tail);
}

// Each class has its own order of "user" and "additionalData".
template <class Class>
void expectAccountJson(CheckPointType type, bool isDataFirst) {
  const std::string user = ",\"user\":" + std::string(kWrittenUser);
  const std::string data = ",\"additionalData\":{\"k\":1}";
  const std::string text = "{\"checkpoint_type\":\"" + CheckPointTypeToString::toString(type) +
                           "\"" + (isDataFirst ? data + user : user + data) + "}";
  Class checkPoint(accountUser());
  EXPECT_EQ(checkPoint.type(), type);
  checkPoint.setAdditionalData(parsedJson("{\"k\":1}"));
  EXPECT_EQ(compactText(checkPoint.getJson()), text);
  EXPECT_EQ(compactText(Class::fromJson(checkPoint.getJson())->getJson()), text);
  checkPoint.setType(CheckPointType::LAUNCH);
  EXPECT_EQ(compactText(checkPoint.getJson()), text) << "a class writes its own type";
}

TEST(AccountCheckPointsTest, WriteTheirKeysInTheirOwnOrderAndReadThemBack) {
  expectAccountJson<Register>(CheckPointType::REGISTER, true);
  expectAccountJson<Login>(CheckPointType::LOGIN, false);
  expectAccountJson<UpdateUserInfo>(CheckPointType::UPDATE_USER_INFO, false);
  expectAccountJson<PasswordChange>(CheckPointType::PASSWORD_CHANGE, false);
}

template <class Class>
void expectTolerantReading(CheckPointType type) {
  const auto text = [](const Json& json) { return compactText(Class::fromJson(json)->getJson()); };
  expectOtherKindsIgnored("user", JsonKind::object, text);
  expectOtherKindsIgnored("additionalData", JsonKind::object, text);
  for (const std::string_view json :
       {"{}", "null", "[]", "{\"checkpoint_type\":\"NONE\"}", "{\"checkpoint_type\":7}"}) {
    EXPECT_EQ(Class::fromJson(parsedJson(json))->type(), type) << json;
    EXPECT_EQ(text(parsedJson(json)), text(Json::object())) << json;
  }
}

TEST(AccountCheckPointsTest, ReadingNeverFailsAndNeverLooksAtTheType) {
  expectTolerantReading<Launch>(CheckPointType::LAUNCH);
  expectTolerantReading<General>(CheckPointType::GENERAL);
  expectTolerantReading<Register>(CheckPointType::REGISTER);
  expectTolerantReading<Login>(CheckPointType::LOGIN);
  expectTolerantReading<UpdateUserInfo>(CheckPointType::UPDATE_USER_INFO);
  expectTolerantReading<PasswordChange>(CheckPointType::PASSWORD_CHANGE);
  EXPECT_EQ(UpdateUserInfo::fromJson(parsedJson("{\"user\":\"u\"}"))->user(), nullptr);
  EXPECT_NE(UpdateUserInfo::fromJson(parsedJson("{\"user\":{}}"))->user(), nullptr);
  EXPECT_EQ(compactText(Launch::fromJson(parsedJson("{\"user\":{}}"))->getJson()),
            "{\"checkpoint_type\":\"LAUNCH\"}");
}

TEST(AccountCheckPointsTest, ALoginFromALoginSharesTheUserAndNothingElse) {
  Login first(accountUser());
  first.setAdditionalData(parsedJson("{\"a\":1}"));
  first.setType(CheckPointType::GENERAL);
  const auto second = Login::withLogin(first);
  EXPECT_EQ(second->user(), first.user());
  EXPECT_EQ(second->additionalData(), nullptr);
  EXPECT_EQ(second->type(), CheckPointType::LOGIN);
}

}  // namespace
}  // namespace quorvance
