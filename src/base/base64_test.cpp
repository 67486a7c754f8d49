#include "base/base64.h"

#include <gtest/gtest.h>

namespace quorvance {
namespace {

TEST(Base64Test, LengthsAroundAGroupAndALine) {
  const std::string line(64, 'A');
  const struct {
    std::string bytes;
    std::string text;
  } kCases[] = {
      {"", ""},
      {"f", "Zg=="},
      {"fo", "Zm8="},
      {"foo", "Zm9v"},
      {"foob", "Zm9vYg=="},
      {"\xFB\xEF\xFF", "++//"},
      {std::string(48, '\0'), line},
      {std::string(49, '\0'), line + "\r\nAA=="},
      {std::string(96, '\0'), line + "\r\n" + line},
  };
  for (const auto& one : kCases) EXPECT_EQ(base64InLines(one.bytes), one.text);
}

}  // namespace
}  // namespace quorvance
