#include "platform/linux/facts/assignments.h"

#include <gtest/gtest.h>

namespace quorvance {
namespace {

TEST(AssignmentsTest, UnderstandsTheQuotingOfTheShell) {
  const Assignments values = parseAssignments(
      "# comment\n"
      "PLAIN=12\n"
      "  INDENTED=x\r\n"
      "DOUBLE=\"Debian GNU/Linux\"\n"
      "SINGLE='a\\b \"c\"'\n"
      "ESCAPED=\"a\\\"b\\\\c\\$d\"\n"
      "JOINED=a'b c'\"d\"\\ e  # comment\n"
      "EMPTY=\n"
      "BLANK=\"  \"\n"
      "OPEN=\"never closed\n"
      "TWICE=1\nTWICE=2\n"
      "NO-NAME=1\n"
      "=1\n"
      "no assignment\n"
      "LAST=end\\");
  EXPECT_EQ(assigned(values, "PLAIN"), "12");
  EXPECT_EQ(assigned(values, "INDENTED"), "x");
  EXPECT_EQ(assigned(values, "DOUBLE"), "Debian GNU/Linux");
  EXPECT_EQ(assigned(values, "SINGLE"), "a\\b \"c\"");
  EXPECT_EQ(assigned(values, "ESCAPED"), "a\"b\\c$d");
  EXPECT_EQ(assigned(values, "JOINED"), "ab cd e");
  EXPECT_EQ(assigned(values, "EMPTY"), std::nullopt);
  EXPECT_EQ(assigned(values, "BLANK"), std::nullopt);
  EXPECT_EQ(assigned(values, "OPEN"), "never closed");
  EXPECT_EQ(assigned(values, "TWICE"), "2");
  EXPECT_EQ(assigned(values, "LAST"), "end\\");
  EXPECT_EQ(values.size(), 11U);
}

}  // namespace
}  // namespace quorvance
