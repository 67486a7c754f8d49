#include "base/text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace quorvance {
namespace {

// A literal may hold NUL bytes.
template <std::size_t Size>
std::string rawBytes(const char (&literal)[Size]) {
  return std::string(literal, Size - 1);
}

std::string replacements(std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += "\xEF\xBF\xBD";
  return text;
}

TEST(NumberTextTest, ChoosesBetweenPositionsAndExponentsByTheSizeOfTheNumber) {
  const std::vector<std::pair<double, std::string>> rows = {
      {0.0, "0.0"},
      {-0.0, "-0.0"},
      {-12.0, "-12.0"},
      {1.0 / 3.0, "0.3333333333333333"},
      {1e-4, "0.0001"},
      {std::nextafter(1e-4, 0.0), "9.999999999999999e-05"},
      {std::nextafter(1e16, 0.0), "9999999999999998.0"},
      {1e16, "1e+16"},
      {123456789012345680.0, "1.2345678901234568e+17"},
      {5e-324, "5e-324"},
      {std::numeric_limits<double>::max(), "1.7976931348623157e+308"}};
  for (const auto& [number, text] : rows) EXPECT_EQ(textOf(number), text);
}

// RFC 3629, section 4: the ends of every range of the grammar, and what lies beyond them.
TEST(Utf8Test, AcceptsWhatTheGrammarAllowsAndNothingElse) {
  for (const std::string& text :
       {std::string(), rawBytes("\0"), rawBytes("\x7F"), rawBytes("\xC2\x80"), rawBytes("\xDF\xBF"),
        rawBytes("\xE0\xA0\x80"), rawBytes("\xEC\xBF\xBF"), rawBytes("\xED\x9F\xBF"),
        rawBytes("\xEE\x80\x80"), rawBytes("\xEF\xBF\xBF"), rawBytes("\xF0\x90\x80\x80"),
        rawBytes("\xF3\xBF\xBF\xBF"), rawBytes("\xF4\x8F\xBF\xBF"), rawBytes("a\xC3\xA9z")}) {
    EXPECT_TRUE(isUtf8(text)) << testing::PrintToString(text);
    EXPECT_EQ(replaceIllFormedUtf8(text), text);
  }
  for (const std::string text :
       {"\x80", "\xC0\x80", "\xC1\xBF", "\xC2", "\xC2\x7F", "\xC2\xC0", "\xE0\x9F\xBF", "\xE1\x80",
        "\xED\xA0\x80", "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF", "\xF1\x80\x80", "\xF4\x90\x80\x80",
        "\xF5\x80\x80\x80", "\xFF", "ok\xE2\x82"}) {
    EXPECT_FALSE(isUtf8(text)) << testing::PrintToString(text);
    EXPECT_TRUE(isUtf8(replaceIllFormedUtf8(text)));
  }
}

// The examples of the Unicode standard, chapter 3.9, tables 3-8 to 3-11.
TEST(Utf8Test, ReplacesEachMaximalIllFormedPartOnce) {
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41", replacements(8) + "A"},
      {"\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41", replacements(8) + "A"},
      {"\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42", replacements(5) + "A" + replacements(2) + "B"},
      {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", replacements(4) + "A"},
      {"ok\xE2\x82", "ok" + replacements(1)}};
  for (const auto& [bytes, text] : rows) EXPECT_EQ(replaceIllFormedUtf8(bytes), text);
}

TEST(PercentEncodingTest, KeepsWhatAQueryMayHoldAndEncodesTheRest) {
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"AZaz09-._~", "AZaz09-._~"},
      {"!$&'()*+,;=:@/?", "!$&'()*+,;=:@/?"},
      {"100%", "100%25"},
      {"#[]", "%23%5B%5D"},
      {"\"<>\\^`{|}", "%22%3C%3E%5C%5E%60%7B%7C%7D"},
      {rawBytes("\0\x1F\x7F"), "%00%1F%7F"},
      {"\xF0\x9F\x98\x80", "%F0%9F%98%80"},
      {"caf\xE9", "caf%EF%BF%BD"}};
  for (const auto& [text, encoded] : rows) EXPECT_EQ(percentEncodeForQuery(text), encoded);
}

}  // namespace
}  // namespace quorvance
