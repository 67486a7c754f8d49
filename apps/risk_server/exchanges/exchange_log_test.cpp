#include "apps/risk_server/exchanges/exchange_log.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <future>
#include <string>

#include "apps/risk_server/sample_bodies.h"

namespace risk_server {
namespace {

using std::chrono::milliseconds;
constexpr milliseconds kLongWait{30'000};

class LogFolder {
 public:
  LogFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "exchange_log_XXXXXX").string();
    path_ = mkdtemp(pattern.data());
  }
  ~LogFolder() { std::filesystem::remove_all(path_); }
  LogFolder(const LogFolder&) = delete;
  LogFolder& operator=(const LogFolder&) = delete;
  std::filesystem::path file() const { return path_ / "log.jsonl"; }

 private:
  std::filesystem::path path_;
};

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
  const LogFolder folder;
  for (int run = 0; run < 2; ++run) {
    ExchangeLog log(folder.file());
    log.record(exchangeOf("/a//b/", R"({"x":1})"));
    log.record(exchangeOf("/c", "no\nJSON \xff", "wrong"));
    // Flushed as written: the log is still open.
    EXPECT_EQ(linesOf(folder.file()).size(), static_cast<std::size_t>(run + 1) * 2);
  }
  const std::vector<std::string> lines = linesOf(folder.file());
  EXPECT_EQ(lines[2], R"({"time":7,"method":"POST","path":"/a//b/","status":200,"contentType":"t",)"
                      R"("request":{"x":1},"reply":{"response":"OK"}})");
  EXPECT_EQ(lines[3], R"({"time":7,"method":"POST","path":"/c","status":400,"contentType":"t",)"
                      R"("requestText":"no\nJSON �","reply":{"response":"OK"},"fault":"wrong"})");
}

TEST(ExchangeLogTest, refusesAFileThatCannotBeWritten) {
  const LogFolder folder;
  EXPECT_THROW(ExchangeLog(folder.file() / "deeper"), InputError);
}

TEST(ExchangeLogTest, countsAcceptedCallsByPathAndRefusals) {
  ExchangeLog log(std::nullopt);
  log.record(exchangeOf("/a", "{}"));
  log.record(exchangeOf("/a", "{}"));
  log.record(exchangeOf("/a", "{}", "wrong"));
  EXPECT_EQ(log.tally().calls, (std::map<std::string, std::uint64_t>{{"/a", 2}}));
  EXPECT_EQ(log.tally().refused, 1U);
}

TEST(ExchangeLogTest, waitEndsWithTheCallOrTheTime) {
  ExchangeLog log(std::nullopt);
  auto waiter =
      std::async(std::launch::async, [&] { return log.waitForCalls("/a", 2, kLongWait); });
  log.record(exchangeOf("/a", "{}"));
  EXPECT_FALSE(log.waitForCalls("/a", 2, milliseconds{0}));
  log.record(exchangeOf("/a", "{}"));
  EXPECT_TRUE(waiter.get());
  EXPECT_FALSE(log.waitForRefusals(1, milliseconds{0}));
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
