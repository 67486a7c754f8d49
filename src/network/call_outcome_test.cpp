#include "network/call_outcome.h"

#include <gtest/gtest.h>

namespace quorvance {
namespace {

struct OutcomeRow {
  const char* what;
  HttpReply reply;
  std::optional<std::int64_t> error;
  bool hasOutput;
  bool isReported;
  bool isPrinted;
};

HttpReply replyOf(int status, std::string body) { return {std::nullopt, status, std::move(body)}; }

TEST(CallOutcomeTest, FirstMatchWins) {
  const PlatformError reset{"libcurl", 56, "reset", std::nullopt};
  const std::vector<OutcomeRow> rows = {
      {"refused", {reset, std::nullopt, std::nullopt}, -1, false, true, false},
      {"broken off after its head", {reset, 200, std::nullopt}, -1, false, true, false},
      {"an error beside a whole body", {reset, 200, "{}"}, -1, false, true, false},
      {"no body at all", {std::nullopt, 200, std::nullopt}, -1, false, true, false},
      {"created", replyOf(201, "{}"), 201, false, true, true},
      {"no content", replyOf(204, ""), 204, false, true, true},
      {"moved", replyOf(301, ""), 301, false, true, true},
      {"not UTF-8", replyOf(200, "{\"a\":\"\xC3\"}"), 200, false, true, true},
      {"a surrogate", replyOf(200, "\xED\xA0\x80"), 200, false, true, true},
      {"no status", {std::nullopt, std::nullopt, "{}"}, std::nullopt, false, true, true},
      {"no bytes", replyOf(200, ""), kParseFailureCode, false, false, true},
      {"no JSON", replyOf(200, "OK"), kParseFailureCode, false, false, true},
      {"two values", replyOf(200, "{} {}"), kParseFailureCode, false, false, true},
      {"nested too deep", replyOf(200, std::string(100'000, '[')), kParseFailureCode, false, false,
       true},
      {"an array", replyOf(200, "[]"), std::nullopt, false, false, true},
      {"a bare text", replyOf(200, "\"OK\""), std::nullopt, false, false, true},
      {"an object", replyOf(200, "{}"), std::nullopt, true, false, true},
  };
  for (const OutcomeRow& row : rows) {
    const CallOutcome outcome = decideOutcome(row.reply, "mine", "http://risk.test/p");
    EXPECT_EQ(outcome.response.error, row.error) << row.what;
    EXPECT_EQ(outcome.response.output.has_value(), row.hasOutput) << row.what;
    EXPECT_EQ(outcome.isCommunicationError, row.isReported) << row.what;
    EXPECT_EQ(outcome.isPrinted, row.isPrinted) << row.what;
    EXPECT_EQ(outcome.parseError.has_value(), row.error == kParseFailureCode) << row.what;
    EXPECT_EQ(outcome.response.requestId, "mine") << row.what;
    EXPECT_EQ(outcome.response.url, "http://risk.test/p") << row.what;
  }
}

TEST(CallOutcomeTest, OnlyATextReplacesTheRequestIdentifier) {
  EXPECT_EQ(
      decideOutcome(replyOf(200, R"({"requestID":"theirs"})"), "mine", "u").response.requestId,
      "theirs");
  EXPECT_EQ(decideOutcome(replyOf(200, R"({"requestID":7})"), "mine", "u").response.requestId,
            "mine");
  EXPECT_EQ(
      decideOutcome(replyOf(500, R"({"requestID":"theirs"})"), "mine", "u").response.requestId,
      "mine");
}

TEST(CallOutcomeTest, TextFormHasTheDoubledError) {
  ResponceObject response;
  response.requestId = "r";
  EXPECT_EQ(response.text(), "reqID: r url: nil statusCode: nil error: nil error: nil output: nil");
  response = decideOutcome(replyOf(200, R"({"a":1})"), "r", "u").response;
  EXPECT_EQ(response.text(),
            "reqID: r url: Optional(u) statusCode: Optional(200) error: nil error: nil "
            "output: Optional({\"a\":1})");
}

}  // namespace
}  // namespace quorvance
