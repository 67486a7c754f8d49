#include "apps/risk_server/exchanges/exchange_log.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <future>
#include <string>

#include "apps/risk_server/http/text_codecs.h"
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
  Exchange exchange;
  exchange.time = 7;
  exchange.received = 6;
  exchange.method = "POST";
  exchange.path = path;
  exchange.contentType = "t";
  exchange.request = request;
  exchange.status = fault.empty() ? 200 : 400;
  exchange.reply = R"({"response":"OK"})";
  exchange.fault = fault;
  return exchange;
}

std::vector<std::string> linesOf(const std::filesystem::path& file) {
  std::ifstream stream(file);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

bool all(const Exchange& /*exchange*/) { return true; }

// What stands in a line for the body, as its reader puts it together.
std::string bytesOfBody(const Json& line, const std::string& key) {
  if (const auto bytes = findText(line, key + "Bytes")) return *bytesFromBase64Url(*bytes);
  const Json* body = findMember(line, key);
  if (body == nullptr) body = findMember(line, key + "Text");
  return body->is_string() ? body->get<std::string>() : dumpServerJson(*body);
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
                      R"("request":{"x":1},"reply":{"response":"OK"},"received":6,"id":1})");
  EXPECT_EQ(lines[3], R"({"time":7,"method":"POST","path":"/c","status":400,"contentType":"t",)"
                      R"("requestText":"no\nJSON �","requestBytes":"bm8KSlNPTiD_",)"
                      R"("reply":{"response":"OK"},"fault":"wrong","received":6,"id":2})");
}

TEST(ExchangeLogTest, aLineGivesTheBytesBackWhateverTheyAre) {
  for (const char* bytes : {R"({"a":1,"a":2})", R"({"big":9007199254740993})", R"({"n":1.50})",
                            R"("text")", "text", "", "[ ]", "\xff\xfe", "{\"a\":\"\xc3\"}"}) {
    Exchange exchange;
    exchange.request = exchange.reply = bytes;
    const Json line = sample::parsed(dumpServerJson(exchangeToJson(exchange)));
    EXPECT_EQ(bytesOfBody(line, "request"), bytes);
    EXPECT_EQ(bytesOfBody(line, "reply"), bytes);
  }
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
  EXPECT_EQ(many.newest(kMaxKeptExchanges + 1, all).size(), kMaxKeptExchanges);
  EXPECT_EQ(many.kept().front().path, "1");

  ExchangeLog large(std::nullopt);
  const std::string third(kMaxKeptBytes / 3, 'x');
  for (const char* path : {"/1", "/2", "/3"}) large.record(exchangeOf(path, third));
  ASSERT_EQ(large.kept().size(), 2U);
  EXPECT_EQ(large.kept().front().path, "/2");
}

// What a reader knows of the log: the newest that it was told of every exchange.
using Known = std::map<std::uint64_t, bool>;

// Reads on from a number to the end, a few changes at a time.
std::uint64_t readOn(const ExchangeLog& log, std::uint64_t change, Known& known) {
  for (;;) {
    const ExchangeChanges changes = log.changesAfter(change, 3);
    for (const KeptExchange& kept : changes.changed) {
      known[kept.exchange->id] = kept.outcome.delivery.has_value();
    }
    std::erase_if(known, [&](const auto& entry) { return entry.first < changes.oldest; });
    change = changes.last;
    if (!changes.hasMore) return change;
  }
}

TEST(ExchangeLogTest, aReaderThatStopsAnywhereMissesNothing) {
  ExchangeLog log(std::nullopt);
  std::vector<std::pair<std::uint64_t, Known>> stopped = {{0, {}}};
  for (int i = 1; i <= 12; ++i) {
    const std::uint64_t id = log.record(exchangeOf("/a", "{}"));
    if (i % 3 != 0) log.setOutcome(id, {Delivery::kWhole, 1, 1});
    if (i == 7) log.clearKept();
    if (i == 9) log.setOutcome(8, {Delivery::kCut, 1, 1});
    Known known = stopped.back().second;
    const std::uint64_t change = readOn(log, stopped.back().first, known);
    stopped.emplace_back(change, known);
  }
  const Known expected = {{8, true}, {9, false}, {10, true}, {11, true}, {12, false}};
  for (auto& [change, known] : stopped) {
    EXPECT_FALSE(log.changesAfter(change, 3).hasGap) << change;
    readOn(log, change, known);
    EXPECT_EQ(known, expected) << change;
  }
  EXPECT_EQ(log.changesAfter(0, 100).changed.size(), expected.size());
  const std::uint64_t end = stopped.back().first;
  log.clearKept();
  EXPECT_GT(log.changesAfter(end, 100).last, end);
}

TEST(ExchangeLogTest, tellsAReaderThatExchangesWereDropped) {
  ExchangeLog log(std::nullopt);
  const std::string half(kMaxKeptBytes / 2, 'x');
  log.record(exchangeOf("/1", ""));
  const std::uint64_t early = log.changesAfter(0, 9).last;
  log.record(exchangeOf("/2", half));
  const std::uint64_t late = log.changesAfter(0, 9).last;
  log.record(exchangeOf("/3", half));
  EXPECT_TRUE(log.changesAfter(early, 9).hasGap);
  EXPECT_FALSE(log.changesAfter(late, 9).hasGap);
  EXPECT_EQ(log.changesAfter(early, 9).oldest, 3U);
  // Who begins knows of none.
  EXPECT_FALSE(log.changesAfter(0, 9).hasGap);
}

}  // namespace
}  // namespace risk_server
