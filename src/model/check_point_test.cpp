#include "quorvance/check_point.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <type_traits>

#include "base/json_test_support.h"
#include "quorvance/account_check_points.h"
#include "quorvance/add_payment_method.h"
#include "quorvance/transaction.h"

namespace quorvance {
namespace {

template <class CheckPointClass>
constexpr bool isMadeFromABareType = std::is_constructible_v<CheckPointClass, CheckPointType>;

// An initialiser that is not available is refused while compiling.
static_assert(!std::is_default_constructible_v<CheckPoint> && !std::is_copy_constructible_v<Login>);
static_assert(!std::is_default_constructible_v<Login> &&
              !std::is_default_constructible_v<Register>);
static_assert(!std::is_default_constructible_v<AddPaymentMethod>);
static_assert(isMadeFromABareType<CheckPoint> && !isMadeFromABareType<Launch>);
static_assert(!isMadeFromABareType<General> && !isMadeFromABareType<Login>);
static_assert(!isMadeFromABareType<Register> && !isMadeFromABareType<UpdateUserInfo>);
static_assert(!isMadeFromABareType<PasswordChange> && !isMadeFromABareType<Transaction>);
static_assert(!isMadeFromABareType<AddPaymentMethod>);

Json deepObject(std::size_t depth) {
  Json value = Json::object();
  for (std::size_t i = 1; i < depth; ++i) {
    Json outer = makeObject(1);
    putMember(outer, "d", std::move(value));
    value = std::move(outer);
  }
  return value;
}

TEST(CheckPointTest, WritesItsTypeAndWhatTheHostAttached) {
  CheckPoint checkPoint(CheckPointType::LOGIN);
  EXPECT_EQ(checkPoint.additionalData(), nullptr);
  EXPECT_EQ(compactText(checkPoint.getJson()), R"({"checkpoint_type":"LOGIN"})");
  checkPoint.setAdditionalData(Json::object());
  EXPECT_EQ(compactText(checkPoint.getJson()),
            R"({"checkpoint_type":"LOGIN","additionalData":{}})");
  const std::string data = R"({"z":null,"a":[1,1.0,true,""],"n":{"k":{}}})";
  checkPoint.setAdditionalData(parsedJson(data));
  checkPoint.setType(CheckPointType::UPDATE_DETAILS);
  EXPECT_EQ(compactText(checkPoint.getJson()),
            R"({"checkpoint_type":"UPDATE_DETAILS","additionalData":)" + data + "}");
}

TEST(CheckPointTest, ReadsItsDataWhenThatIsAnObject) {
  const auto none =
      CheckPoint::fromJson(parsedJson(R"({"checkpoint_type":"NONE","additionalData":5})"));
  EXPECT_EQ(compactText(none->getJson()), R"({"checkpoint_type":"NONE"})");
  const std::string text = R"({"checkpoint_type":"LOGIN","additionalData":{"a":1}})";
  EXPECT_EQ(compactText(CheckPoint::fromJson(parsedJson(text))->getJson()), text);
}

Json typelessValues() {
  return parsedJson(
      R"([{},null,5,[],"LOGIN",[{"checkpoint_type":"LOGIN"}],{"checkpoint_type":"login"},)"
      R"({"checkpoint_type":" LOGIN"},{"checkpoint_type":""},{"checkpoint_type":2},)"
      R"({"checkpoint_type":null},{"checkpoint_type":["LOGIN"]},{"type":"LOGIN"}])");
}

TEST(CheckPointTest, IsNotReadWithoutAKnownType) {
  for (const Json& value : typelessValues()) {
    EXPECT_EQ(CheckPoint::fromJson(value), nullptr) << compactText(value);
  }
}

TEST(CheckPointParseTest, RefusesWithAnEmptyError) {
  Json refused = typelessValues();
  for (const auto* word : {"UPDATE_DETAILS", "UPDATE_USER_INFO", "PASSWORD_CHANGE", "NONE"}) {
    refused.push_back({{"checkpoint_type", word}, {"user", Json::object()}});
  }
  for (const Json& value : refused) {
    PlatformError error{"before", 7, "before", "before"};
    EXPECT_EQ(CheckPoint::parse(value, &error), nullptr) << compactText(value);
    EXPECT_EQ(error, PlatformError{}) << error.text();
    EXPECT_EQ(CheckPoint::parse(value), nullptr);
  }
}

template <class CheckPointClass>
void expectRebuilt(CheckPointType type) {
  Json json = Json::object();
  json["checkpoint_type"] = CheckPointTypeToString::toString(type);
  json["user"] = parsedJson(R"({"user_id":"u"})");
  json["additionalData"] = parsedJson(R"({"a":1})");
  const auto rebuilt = CheckPoint::parse(json);
  ASSERT_NE(dynamic_cast<CheckPointClass*>(rebuilt.get()), nullptr) << compactText(json);
  EXPECT_EQ(rebuilt->type(), type);
  const Json written = rebuilt->getJson();
  EXPECT_EQ(compactText(written.at("additionalData")), R"({"a":1})");
  if (written.contains("user")) {
    EXPECT_EQ(written.at("user").at("user_id"), "u");
  }
}

TEST(CheckPointParseTest, RebuildsTheClassOfTheTypeFromTheWholeMap) {
  expectRebuilt<Launch>(CheckPointType::LAUNCH);
  expectRebuilt<Register>(CheckPointType::REGISTER);
  expectRebuilt<Login>(CheckPointType::LOGIN);
  expectRebuilt<Transaction>(CheckPointType::TRANSACTION);
  expectRebuilt<AddPaymentMethod>(CheckPointType::ADD_PAYMENT_METHOD);
  expectRebuilt<General>(CheckPointType::GENERAL);
}

TEST(CheckPointTest, DataNestedTooDeepMakesABodyThatCannotBeJson) {
  for (const bool fits : {true, false}) {
    CheckPoint checkPoint(CheckPointType::GENERAL);
    checkPoint.setAdditionalData(deepObject(fits ? 127 : 128));
    EXPECT_EQ(writeJson(checkPoint.getJson()).has_value(), fits);
  }
}

// Copies of JSON recurse, so nothing may copy what a host nests without end.
TEST(CheckPointDeathTest, DataNestedWithoutEndDoesNotEndTheProcess) {
  EXPECT_EXIT(
      {
        CheckPoint checkPoint(CheckPointType::GENERAL);
        checkPoint.setAdditionalData(deepObject(200'000));
        std::_Exit(writeJson(checkPoint.getJson()).has_value() ? 1 : 0);
      },
      testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        Json json = makeObject(2);
        putMember(json, "checkpoint_type", Json("GENERAL"));
        putMember(json, "additionalData", deepObject(200'000));
        CheckPoint::parse(json);
        std::_Exit(0);
      },
      testing::ExitedWithCode(0), "");
}

TEST(CheckPointDeathTest, ATypeOutsideTheVocabularyStopsTheProcess) {
  const CheckPoint checkPoint(static_cast<CheckPointType>(10));
  EXPECT_DEATH(checkPoint.getJson(), "fatal");
}

}  // namespace
}  // namespace quorvance
