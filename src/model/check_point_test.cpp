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

// An initialiser that is not available is refused while compiling.
template <class... Classes>
constexpr bool areMadeFromNoBareType = (!std::is_constructible_v<Classes, CheckPointType> && ...);
template <class... Classes>
constexpr bool areMadeFromSomething = (!std::is_default_constructible_v<Classes> && ...);

static_assert(!std::is_copy_constructible_v<Login>);
static_assert(areMadeFromSomething<CheckPoint, Login, Register, AddPaymentMethod>);
static_assert(areMadeFromNoBareType<Launch, General, Login, Register, UpdateUserInfo,
                                    PasswordChange, Transaction, AddPaymentMethod>);

TEST(CheckPointTest, WritesItsTypeAndTheObjectThatTheHostAttached) {
  CheckPoint checkPoint(CheckPointType::LOGIN);
  const std::string data = R"({"z":null,"a":[1,1.0,true,""],"n":{"k":{}}})";
  checkPoint.setAdditionalData(parsedJson(data));
  checkPoint.setAdditionalData(5);
  checkPoint.setType(CheckPointType::UPDATE_DETAILS);
  EXPECT_EQ(compactText(checkPoint.getJson()),
            R"({"checkpoint_type":"UPDATE_DETAILS","additionalData":)" + data + "}");
  checkPoint.setAdditionalData(nullptr);
  EXPECT_EQ(compactText(checkPoint.getJson()), R"({"checkpoint_type":"UPDATE_DETAILS"})");
  for (const std::string text : {R"({"checkpoint_type":"NONE"})",
                                 R"({"checkpoint_type":"LOGIN","additionalData":{"a":1}})"}) {
    EXPECT_EQ(compactText(CheckPoint::fromJson(parsedJson(text))->getJson()), text);
  }
}

TEST(CheckPointTest, IsNeitherReadNorRebuiltWithoutAKnownType) {
  for (const Json& value :
       parsedJson(R"([{},null,5,"LOGIN",[{"checkpoint_type":"LOGIN"}],{"checkpoint_type":"login"},)"
                  R"({"checkpoint_type":" LOGIN"},{"checkpoint_type":""},{"checkpoint_type":2},)"
                  R"({"checkpoint_type":["LOGIN"]},{"type":"LOGIN"}])")) {
    PlatformError error{"before", 7, "before", "before"};
    EXPECT_EQ(CheckPoint::fromJson(value), nullptr) << compactText(value);
    EXPECT_EQ(CheckPoint::parse(value, &error), nullptr) << compactText(value);
    EXPECT_EQ(error, PlatformError{}) << error.text();
  }
}

TEST(CheckPointParseTest, RebuildsTheClassOfTheTypeFromTheWholeMap) {
  const auto rebuilt = [](const char* word) {
    return CheckPoint::parse({{"checkpoint_type", word}, {"additionalData", {{"a", 1}}}});
  };
  const auto isOf = [&]<class Class>(std::type_identity<Class>, const char* word) {
    const auto checkPoint = rebuilt(word);
    ASSERT_NE(dynamic_cast<Class*>(checkPoint.get()), nullptr) << word;
    EXPECT_EQ(compactText(checkPoint->getJson().at("additionalData")), R"({"a":1})");
  };
  isOf(std::type_identity<Launch>(), "LAUNCH");
  isOf(std::type_identity<Register>(), "REGISTER");
  isOf(std::type_identity<Login>(), "LOGIN");
  isOf(std::type_identity<Transaction>(), "TRANSACTION");
  isOf(std::type_identity<AddPaymentMethod>(), "ADD_PAYMENT_METHOD");
  isOf(std::type_identity<General>(), "GENERAL");
  for (const char* word : {"UPDATE_DETAILS", "UPDATE_USER_INFO", "PASSWORD_CHANGE", "NONE"}) {
    EXPECT_EQ(rebuilt(word), nullptr) << word;
  }
}

// Copies of JSON recurse, so nothing may copy what a host nests without end.
TEST(CheckPointDeathTest, DataNestedWithoutEndDoesNotEndTheProcess) {
  EXPECT_EXIT(
      {
        CheckPoint checkPoint(CheckPointType::GENERAL);
        checkPoint.setAdditionalData(nestedObjects(200'000));
        const bool isWritten = writeJson(checkPoint.getJson()).has_value();
        Json json = makeObject(2);
        putMember(json, "checkpoint_type", Json("GENERAL"));
        putMember(json, "additionalData", nestedObjects(200'000));
        CheckPoint::parse(json);
        std::_Exit(isWritten ? 1 : 0);
      },
      testing::ExitedWithCode(0), "");
}

TEST(CheckPointDeathTest, ATypeOutsideTheVocabularyStopsTheProcess) {
  const CheckPoint checkPoint(static_cast<CheckPointType>(10));
  EXPECT_DEATH(checkPoint.getJson(), "fatal");
}

}  // namespace
}  // namespace quorvance
