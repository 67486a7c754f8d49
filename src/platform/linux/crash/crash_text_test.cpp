#include "platform/linux/crash/crash_text.h"

#include <gmock/gmock.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>

#include "base/json.h"

namespace quorvance {
namespace {

constexpr std::size_t kNoLimit = 10'000;

struct CrashTextInMemory {
  explicit CrashTextInMemory(std::size_t capacity = kNoLimit) : memory(capacity, '#') {}
  std::string memory;
  CrashText text{memory};
};

std::string escapedInMemory(std::string_view text, std::size_t maxBytes = kNoLimit) {
  CrashTextInMemory buffer;
  buffer.text.appendEscaped(text, maxBytes);
  return std::string(buffer.text.view());
}

TEST(CrashTextTest, EscapesAsStoredReportsDo) {
  std::string everyControl;
  for (char c = 1; c < 0x20; ++c) everyControl += c;
  const std::string texts[] = {"", "\"quoted\" and C:\\path", everyControl + '\x7f',
                               std::string("a\0b", 3),
                               "\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80 \xFFz \xC3"};
  for (const std::string& text : texts) {
    EXPECT_EQ("\"" + escapedInMemory(text) + "\"", textOf(Json(text)));
  }
}

TEST(CrashTextTest, CutTextIsStillJson) {
  const std::string text = "a\n\x01\xE2\x82\xAC\"\xFF";
  for (std::size_t limit = 0; limit < 40; ++limit) {
    const std::string cut = escapedInMemory(text, limit);
    EXPECT_LE(cut.size(), limit);
    EXPECT_TRUE(parseJson("\"" + cut + "\"")) << cut;
  }
  CrashTextInMemory small(4);
  small.text.appendEscaped("ab\"\"", kNoLimit);
  small.text.append("more");
  EXPECT_EQ(small.text.view(), "ab\\\"");
  EXPECT_EQ(small.text.room(), 0U);
}

TEST(CrashTextTest, NumbersHaveTheirShortestForm) {
  CrashTextInMemory buffer;
  for (const std::int64_t number :
       {std::int64_t{0}, std::int64_t{-7}, std::numeric_limits<std::int64_t>::max(),
        std::numeric_limits<std::int64_t>::min()}) {
    buffer.text.clear();
    buffer.text.appendDecimal(number);
    EXPECT_EQ(buffer.text.view(), std::to_string(number));
  }
  buffer.text.clear();
  buffer.text.appendHexadecimal(0);
  buffer.text.append(" ");
  buffer.text.appendHexadecimal(std::numeric_limits<std::uintptr_t>::max());
  EXPECT_EQ(buffer.text.view(), "0x0 0x" + std::string(2 * sizeof(std::uintptr_t), 'f'));
}

}  // namespace
}  // namespace quorvance
