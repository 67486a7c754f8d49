#include "apps/risk_server/exchange_log.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "apps/risk_server/sample_bodies.h"
#include "platform/testing/temporary_folder_test_support.h"

namespace risk_server {
namespace {

Exchange exchangeOf(const std::string& path, const std::string& request,
                    const std::string& fault = "") {
  return {7,     "POST", path, "t", request, fault.empty() ? 200 : 400, R"({"response":"OK"})",
          fault, ""};
}

std::vector<std::string> linesOf(const std::filesystem::path& file) {
  std::ifstream stream(file);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

TEST(ExchangeLogTest, writesALineForEachExchangeAndAppends) {
  const quorvance::TemporaryFolder folder;
  for (int run = 0; run < 2; ++run) {
    ExchangeLog log(folder.at("log"));
    log.record(exchangeOf("/a//b/", R"({"x":1})"));
    log.record(exchangeOf("/c", "no\nJSON \xff", "wrong"));
    // Flushed as written: the log is still open.
    EXPECT_EQ(linesOf(folder.at("log")).size(), static_cast<std::size_t>(run + 1) * 2);
  }
  EXPECT_THROW(ExchangeLog(folder.at("log/deeper")), InputError);
  const std::vector<std::string> lines = linesOf(folder.at("log"));
  EXPECT_EQ(lines[2], R"({"time":7,"method":"POST","path":"/a//b/","status":200,"contentType":"t",)"
                      R"("request":{"x":1},"reply":{"response":"OK"}})");
  EXPECT_EQ(lines[3], R"({"time":7,"method":"POST","path":"/c","status":400,"contentType":"t",)"
                      R"("requestText":"no\nJSON �","reply":{"response":"OK"},"fault":"wrong"})");
}

TEST(ExchangeLogTest, keepsTheNewestWithinBothBounds) {
  ExchangeLog many(std::nullopt);
  for (std::size_t i = 0; i <= kMaxKeptExchanges; ++i) {
    many.record(exchangeOf(std::to_string(i), ""));
  }
  EXPECT_EQ(many.kept().size(), kMaxKeptExchanges);
  EXPECT_EQ(many.kept().front().path, "1");

  ExchangeLog large(std::nullopt);
  const std::string third(kMaxKeptBytes / 3, 'x');
  for (const char* path : {"/1", "/2", "/3"}) large.record(exchangeOf(path, third));
  ASSERT_EQ(large.kept().size(), 2U);
  EXPECT_EQ(large.kept().front().path, "/2");
}

}  // namespace
}  // namespace risk_server
