#include "base/json_exchange.h"

#include <gtest/gtest.h>

#include <utility>

#include "base/json_test_support.h"

namespace quorvance {
namespace {

/// Stands for the JSON library of a host: another type, which sorts its members.
using OtherJson = nlohmann::json;

TEST(JsonExchangeTest, AnotherTypeReceivesEveryPartAndGivesItBack) {
  const std::string text =
      R"({"a":[1,-2,18446744073709551615,1.5,1.0,-0.0,true,null,"",[],{"":false}],"b":{"c":"\u0001é"}})";
  const OtherJson told = *JsonReader<OtherJson>(jsonSource(parsedJson(text)));
  EXPECT_EQ(told, OtherJson::parse(text));
  EXPECT_EQ(compactText(*JsonView(jsonSource(told))), compactText(parsedJson(text)));
  EXPECT_TRUE((*JsonView(jsonSource(told)))["a"][0].is_number_unsigned());
}

TEST(JsonExchangeTest, WhatIsNoJsonIsNoNumberAndCannotBeSent) {
  const OtherJson told = {{"binary", OtherJson::binary({1, 2})}};
  const JsonView view(jsonSource(told));
  EXPECT_EQ(findNumber(*view, "binary"), std::nullopt);
  EXPECT_FALSE(canBeWritten(*view));
}

TEST(JsonExchangeTest, TheNestedIsMovedAndOfAnotherTypeCutNotFollowedDown) {
  constexpr int kLevels = 400'000;
  Json nested = Json::array();
  OtherJson other = OtherJson::array();
  for (int i = 0; i < kLevels; ++i) {
    nested = Json::array({std::move(nested)});
    other = OtherJson::array({std::move(other)});
  }
  const Json taken = take(movableJsonSource(nested));
  EXPECT_TRUE(taken.is_array());
  EXPECT_TRUE(nested.is_null());
  EXPECT_FALSE(canBeWritten(take(movableJsonSource(other))));
}

}  // namespace
}  // namespace quorvance
