#include "base/json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>

#include "base/json_test_support.h"
#include "base/text.h"

namespace quorvance {
namespace {

using namespace std::string_view_literals;

std::string bracketNest(std::size_t depth, std::string_view inner) {
  return std::string(depth, '[') + std::string(inner) + std::string(depth, ']');
}

std::string braceNest(std::size_t depth) {
  std::string text;
  for (std::size_t i = 1; i < depth; ++i) text += R"({"k":)";
  return text + "{}" + std::string(depth - 1, '}');
}

Json arrayNest(std::size_t depth, Json innermost) {
  Json value = std::move(innermost);
  for (std::size_t i = 0; i < depth; ++i) {
    Json outer = Json::array();
    outer.get_ref<Json::array_t&>().push_back(std::move(value));
    value = std::move(outer);
  }
  return value;
}

TEST(ParseJsonTest, AcceptsNestingUpToTheLimit) {
  for (const std::string_view inner : {"", "1", R"("]")", "[]"}) {
    const std::size_t inside = inner == "[]" ? 1 : 0;
    EXPECT_TRUE(parseJson(bracketNest(128 - inside, inner)).has_value()) << inner;
    EXPECT_FALSE(parseJson(bracketNest(129 - inside, inner)).has_value()) << inner;
  }
  EXPECT_TRUE(parseJson(braceNest(128)).has_value());
  EXPECT_FALSE(parseJson(braceNest(129)).has_value());
  EXPECT_FALSE(parseJson(std::string(4'000'000, '[')).has_value());
}

std::string arrayOf(std::size_t count, const std::string& element) {
  std::string text = "[";
  for (std::size_t i = 0; i < count; ++i) text += (i == 0 ? "" : ",") + element;
  return text + "]";
}

std::string objectOf(std::size_t members, std::size_t keys) {
  std::string text = "{";
  for (std::size_t i = 0; i < members; ++i) {
    text += (i == 0 ? "\"k" : ",\"k") + std::to_string(i % keys) + "\":" + std::to_string(i);
  }
  return text + "}";
}

TEST(ParseJsonTest, CountsTheValuesOfTheWholeText) {
  EXPECT_TRUE(parseJson(arrayOf(65'535, "1")).has_value());
  EXPECT_FALSE(parseJson(arrayOf(65'536, "1")).has_value());
  EXPECT_TRUE(parseJson(arrayOf(21'845, R"({"a":[""]})")).has_value());
  EXPECT_FALSE(parseJson(arrayOf(21'846, R"({"a":[""]})")).has_value());
  EXPECT_EQ(parsedJson(objectOf(6000, 6000)).size(), 6000U);
}

// The JSON library's own builder is what replies were read with, and sets the rule.
TEST(ParseJsonTest, OfEqualKeysTheLastValueStandsInTheFirstPlace) {
  for (const std::string& text :
       {std::string(R"({"a":1,"b":{"c":1,"d":[{}],"c":2},"a":{"e":[]},"":3,"b":4,"":"x"})"),
        std::string(R"([{"a":1},{"a":2,"a":[{"a":3,"a":4}]},{}])"), objectOf(31, 30),
        objectOf(32, 31), objectOf(33, 32), objectOf(34, 33), objectOf(500, 70)}) {
    EXPECT_EQ(compactText(parsedJson(text)), Json::parse(text).dump()) << text;
  }
}

TEST(ParseJsonTest, RefusesWhatIsNoSingleJsonValue) {
  for (const std::string_view text :
       {""sv, "{"sv, "[1,]"sv, "'a'"sv, "nul"sv, "NaN"sv, "1 2"sv, "{}x"sv, "01"sv, "]"sv,
        "// c\n1"sv, "\"\xFF\""sv, "\"\xED\xA0\x80\""sv, "\"a\nb\""sv, "{}\0"sv, "\0{}"sv,
        "\"a\0b\""sv, "{\"a\":1\0}"sv}) {
    EXPECT_FALSE(parseJson(text).has_value()) << text;
  }
}

TEST(WriteJsonTest, RefusesNestingBeyondTheLimitOfTheParser) {
  for (const Json& innermost : {Json::array(), Json::object()}) {
    EXPECT_TRUE(writeJson(arrayNest(127, innermost)).has_value());
    EXPECT_FALSE(writeJson(arrayNest(128, innermost)).has_value());
  }
  EXPECT_TRUE(writeJson(arrayNest(128, Json(1))).has_value());
  EXPECT_FALSE(writeJson(arrayNest(129, Json(1))).has_value());
  EXPECT_FALSE(writeJsonIndented(arrayNest(5000, Json(1))).has_value());
}

TEST(WriteJsonTest, RefusesNumbersThatJsonDoesNotHave) {
  for (const double number : {std::nan(""), std::numeric_limits<double>::infinity(), -HUGE_VAL}) {
    Json object = parsedJson(R"({"a":[{}]})");
    object["a"][0]["b"] = number;
    EXPECT_FALSE(writeJson(object).has_value());
    EXPECT_FALSE(writeJsonIndented(object).has_value());
    EXPECT_EQ(textOf(object), "nil");
  }
}

TEST(WriteJsonTest, ReplacesTextThatIsNotUtf8InKeysAndValues) {
  Json object = Json::object();
  object["k\xFF"] = "caf\xE9";
  EXPECT_EQ(compactText(object), "{\"k\xEF\xBF\xBD\":\"caf\xEF\xBF\xBD\"}");
  const std::string written = compactText(Json("\xC0\xAF\xED\xA0\x80\xF4\x91\x92\x93 \xE2\x82"));
  EXPECT_TRUE(isUtf8(written));
  EXPECT_TRUE(parseJson(written).has_value());
}

// Every byte and every pair, and longer sequences about the bounds of what UTF-8 allows.
TEST(WriteJsonTest, WritesTheBytesOfTheJsonLibrary) {
  const std::string bounds = "\x1F\x22\x41\x5C\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0";
  std::vector<std::string> texts;
  for (int first = 0; first < 256; ++first) {
    texts.push_back({static_cast<char>(first)});
    for (int second = 0; second < 256; ++second) {
      texts.push_back({'x', static_cast<char>(first), static_cast<char>(second), 'y'});
    }
  }
  for (const char lead : "\xC2\xDF\xE0\xE1\xED\xEF\xF0\xF1\xF4\xF5"sv) {
    for (const char second : bounds) {
      for (const char third : bounds) {
        texts.push_back({lead, second, third});
        for (const char fourth : bounds) texts.push_back({lead, second, third, fourth});
      }
    }
  }
  for (const std::string& text : texts) {
    Json object = makeObject(2);
    putMember(object, text, text);
    compactText(object);
  }
  using Limits = std::numeric_limits<double>;
  const Json others = {Limits::max(),
                       Limits::min(),
                       Limits::denorm_min(),
                       -0.0,
                       0.1,
                       1e21,
                       5e-324,
                       99.5,
                       1e15,
                       123456789.123,
                       INT64_MIN,
                       UINT64_MAX,
                       0,
                       -1,
                       true,
                       false,
                       nullptr,
                       Json::array(),
                       Json::object(),
                       "",
                       parsedJson(R"({"":[[],{"a":{}}]})")};
  compactText(others);
  EXPECT_FALSE(writeJson(Json::binary({1})).has_value());
  EXPECT_FALSE(writeJson(Json(Json::value_t::discarded)).has_value());
}

TEST(WriteJsonTest, KeepsTheOrderOfMembersAndTheKindOfNumbers) {
  const std::string text =
      "{\"b\":1,\"a\":1.0,\"z\":-9223372036854775808,\"c\":[true,null,\"\\u0000\\\"\"]}";
  EXPECT_EQ(compactText(parsedJson(text)), text);
  EXPECT_EQ(writeJsonIndented(parsedJson(R"({"a":[1]})")), "{\n  \"a\": [\n    1\n  ]\n}");
}

TEST(JsonMembersTest, FindersTakeTheirOwnKindOnly) {
  const auto found = [](const Json& object) {
    std::string kinds;
    if (findText(object, "k") != nullptr) kinds += 't';
    if (findInteger(object, "k")) kinds += 'i';
    if (findNumber(object, "k")) kinds += 'n';
    if (findBool(object, "k")) kinds += 'b';
    if (findObject(object, "k") != nullptr) kinds += 'o';
    if (findArray(object, "k") != nullptr) kinds += 'a';
    return kinds;
  };
  const std::vector<std::pair<std::string, std::string>> rows = {
      {R"({"k":"5"})", "t"},
      {R"({"k":5})", "in"},
      {R"({"k":5.0})", "n"},
      {R"({"k":true})", "b"},
      {R"({"k":9223372036854775807})", "in"},
      {R"({"k":-9223372036854775808})", "in"},
      {R"({"k":9223372036854775808})", "n"},
      {R"({"k":-9223372036854775809})", "n"},
      {R"({"k":{}})", "o"},
      {R"({"k":[]})", "a"},
      {R"({"k":null})", ""},
      {"{}", ""},
      {R"(["k"])", ""},
      {"null", ""}};
  for (const auto& [text, kinds] : rows) EXPECT_EQ(found(parsedJson(text)), kinds) << text;
}

}  // namespace
}  // namespace quorvance
