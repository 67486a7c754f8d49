#include "quorvance/account_check_points.h"

#include <gtest/gtest.h>

#include "base/json_test_support.h"

namespace quorvance {
namespace {

TEST(AccountCheckPointsTest, LaunchAndGeneralDiscardTheUserIdentifier) {
  EXPECT_EQ(compactText(Launch("u1").getJson()), R"({"checkpoint_type":"LAUNCH"})");
  EXPECT_EQ(compactText(General("u1").getJson()), R"({"checkpoint_type":"GENERAL"})");
}

// What every class keeps: its own type, and an untouched result for what it cannot read.
template <class Class>
void expectOwnJson(CheckPointType type, std::string_view tail) {
  const std::string text = R"({"checkpoint_type":")" + CheckPointTypeToString::toString(type) +
                           R"(",)" + std::string(tail) + "}";
  const auto rewritten = [](const Json& json) {
    return compactText(Class::fromJson(json)->getJson());
  };
  expectRecordText(text, rewritten);
  for (const std::string_view json : {"null", "[]", R"({"checkpoint_type":"NONE"})"}) {
    EXPECT_EQ(Class::fromJson(parsedJson(json))->type(), type) << json;
  }
  const auto checkPoint = Class::fromJson(parsedJson(text));
  checkPoint->setType(CheckPointType::UPDATE_DETAILS);
  EXPECT_EQ(compactText(checkPoint->getJson()), text) << "a class writes its own type";
}

TEST(AccountCheckPointsTest, WriteTheirKeysInTheirOwnOrderAndReadThemBack) {
  const std::string data = R"("additionalData":{"k":[1,{}]})";
  const std::string user =
      R"("user":{"user_id":"u","isEmailVerified":"UNKNOWN","isPhoneUserVerified":"UNKNOWN",)"
      R"("isKYCVerified":"UNKNOWN","user_address":{}})";
  expectOwnJson<Launch>(CheckPointType::LAUNCH, data);
  expectOwnJson<General>(CheckPointType::GENERAL, data);
  expectOwnJson<Register>(CheckPointType::REGISTER, data + "," + user);
  expectOwnJson<Login>(CheckPointType::LOGIN, user + "," + data);
  expectOwnJson<UpdateUserInfo>(CheckPointType::UPDATE_USER_INFO, user + "," + data);
  expectOwnJson<PasswordChange>(CheckPointType::PASSWORD_CHANGE, user + "," + data);
}

TEST(AccountCheckPointsTest, AnAbsentUserIsWrittenAsAnEmptyObject) {
  EXPECT_EQ(compactText(Login(nullptr).getJson()), R"({"checkpoint_type":"LOGIN","user":{}})");
  EXPECT_EQ(UpdateUserInfo::fromJson(parsedJson(R"({"user":"u"})"))->user(), nullptr);
  EXPECT_NE(PasswordChange::fromJson(parsedJson(R"({"user":{}})"))->user(), nullptr);
}

template <class Class>
void expectUsers() {
  EXPECT_EQ(Class({.userId = "u", .email = "e"}).user()->email, "e");
  const auto shared = std::make_shared<User>();
  EXPECT_EQ(Class(shared).user(), shared);
  EXPECT_EQ(Class(nullptr).user(), nullptr);
  EXPECT_EQ(Class({}).user(), nullptr);
}

TEST(AccountCheckPointsTest, TakeAUserWholeSharedOrAbsent) {
  expectUsers<Register>();
  expectUsers<Login>();
  expectUsers<UpdateUserInfo>();
  expectUsers<PasswordChange>();
}

TEST(AccountCheckPointsTest, ALoginFromALoginSharesTheUserAndNothingElse) {
  Login first(std::make_shared<User>(User{.userId = "u"}));
  first.setAdditionalData(parsedJson(R"({"a":1})"));
  first.setType(CheckPointType::GENERAL);
  const auto second = Login::withLogin(first);
  EXPECT_EQ(second->user(), first.user());
  EXPECT_EQ(second->additionalData(), nullptr);
  EXPECT_EQ(second->type(), CheckPointType::LOGIN);
}

}  // namespace
}  // namespace quorvance
