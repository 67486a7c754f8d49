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
  const std::pair<const char*, std::optional<std::string>> cases[] = {
      {"PLAIN", "12"},       {"INDENTED", "x"},       {"DOUBLE", "Debian GNU/Linux"},
      {"EMPTY", {}},         {"BLANK", {}},           {"SINGLE", "a\\b \"c\""},
      {"TWICE", "2"},        {"LAST", "end\\"},       {"ESCAPED", "a\"b\\c$d"},
      {"JOINED", "ab cd e"}, {"OPEN", "never closed"}};
  for (const auto& [name, value] : cases) EXPECT_EQ(assigned(values, name), value) << name;
  EXPECT_EQ(values.size(), 11U);
}

}  // namespace
}  // namespace quorvance
