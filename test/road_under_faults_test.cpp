#include <gmock/gmock.h>

#include <chrono>
#include <cmath>
#include <future>
#include <set>

#include "platform/testing/memory_documents.h"
#include "test/real_world_test_support.h"
#include "test/watched_documents_test_support.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;
using std::chrono::steady_clock;

constexpr const char* kVerdictPath = "qrsk-med/3.0/GetCheckpointRisk/";

/// A manager that has its configuration, over a server that can be made to fail. Its calls give up
/// after one second.
struct FaultyWorld : RealWorld {
  std::shared_ptr<WatchedDocuments> documents =
      std::make_shared<WatchedDocuments>(std::make_shared<MemoryDocuments>());
  std::unique_ptr<QuorvanceManager> manager;

  FaultyWorld() {
    server.setConfiguration(
        nlohmann::ordered_json::parse(R"({"timeout_connection": 1, "tracing_manager": {}})"));
    Platform faulty = platform();
    faulty.documents = documents;
    manager = std::make_unique<QuorvanceManager>(faulty);
    manager->setupWithServerUrl(server.url(), "anna");
    // The identifier is asked for over the same road, so the configuration is in force once a
    // session was taken.
    EXPECT_TRUE(sees("qrsk-med/3.0/getSdkConfiguration/"));
    manager->initializeDeviceId();
    EXPECT_TRUE(sees("qrsk-med/3.0/SendSessionData/"));
  }

  /// The verdict under this fault of the verdict path.
  ReceivedVerdict verdictUnder(const std::string& fault) {
    if (!fault.empty()) {
      server.setFaults("[{\"path\": \"/" + std::string(kVerdictPath) + "\", " + fault + "}]");
    }
    VerdictInbox inbox;
    manager->getRiskForCheckPoint(Launch(), inbox.completion());
    const auto verdicts = inbox.wait(1);
    EXPECT_EQ(verdicts.size(), 1U) << fault;
    server.clearFaults();
    return verdicts.empty() ? ReceivedVerdict{} : verdicts[0];
  }
};

struct FaultRow {
  const char* fault;
  RiskLevel level;
  bool isReported;
};

TEST(RoadUnderFaultsTest, EveryOutcomeIsAVerdictAndAReportOrNone) {
  const std::vector<FaultRow> rows = {
      {R"("resetBeforeReply": true)", RiskLevel::undefined, true},
      {R"("closeWithoutReply": true)", RiskLevel::undefined, true},
      {R"("resetInBody": 5)", RiskLevel::undefined, true},
      {R"("cutBody": 5)", RiskLevel::undefined, true},
      {R"("status": 201)", RiskLevel::undefined, true},
      {R"("status": 204)", RiskLevel::undefined, true},
      {R"("status": 301, "headers": {"Location": "/elsewhere"})", RiskLevel::undefined, true},
      {R"("status": 500)", RiskLevel::undefined, true},
      {R"("bodyBytes": "7b2261223a22ff227d")", RiskLevel::undefined, true},
      {R"("oversize": 9437184)", RiskLevel::undefined, true},
      {R"("hang": true)", RiskLevel::undefined, true},
      {R"("trickle": 1)", RiskLevel::undefined, true},
      {R"("emptyBody": true)", RiskLevel::undefined, false},
      {R"("body": "OK")", RiskLevel::undefined, false},
      {R"("body": "[]")", RiskLevel::undefined, false},
      {R"("nested": 100000)", RiskLevel::undefined, false},
      {R"("reply": {"risk": 2, "requestID": 7})", RiskLevel::high, false},
      {R"("reply": {"risk": -2, "requestID": "theirs", "signedRisk": "s"})", RiskLevel::expire,
       false},
      {R"("latency": 30)", RiskLevel::low, false},
  };
  FaultyWorld world;
  std::size_t reports = 0;
  for (const FaultRow& row : rows) {
    const ReceivedVerdict verdict = world.verdictUnder(row.fault);
    EXPECT_EQ(verdict.level, row.level) << row.fault;
    EXPECT_FALSE(verdict.requestId.empty()) << row.fault;
    // The file lane keeps its order: with the report of this failure, all before it are there.
    world.verdictUnder(R"("status": 599)");
    reports += row.isReported ? 2 : 1;
    EXPECT_EQ(world.documents->waitForWrites(reports, kTestPatience), reports) << row.fault;
  }
  EXPECT_EQ(world.verdictUnder(R"("reply": {"requestID": "theirs"})").requestId, "theirs");
}

TEST(RoadUnderFaultsTest, ServerThatIsNotThereEndsInAnAnswerlessVerdict) {
  FaultyWorld world;
  const std::vector<std::pair<const char*, bool>> urls = {{"http://127.0.0.1:1/", true},
                                                          {"http://no-such-host.invalid/", true},
                                                          {"ftp://127.0.0.1/", true},
                                                          {"127.0.0.1/", true},
                                                          {"http://:80/", true},
                                                          {"http://127.0.0.1:99999/", true},
                                                          {"http://127.0.0.1/%zz/", false},
                                                          {"http://127.0.0.1/a b/", false},
                                                          {"http://127.0.0.1/\xC3\xA9/", false}};
  std::size_t reports = 0;
  for (const auto& [url, isReported] : urls) {
    world.manager->setServerUrl(url);
    const ReceivedVerdict verdict = world.verdictUnder("");
    EXPECT_EQ(verdict.level, RiskLevel::undefined) << url;
    EXPECT_EQ(verdict.signedRisk, "-1") << url;
    EXPECT_EQ(verdict.requestId.size(), 36U) << url;
    reports += isReported ? 1 : 0;
  }
  world.manager->setServerUrl(world.server.url());
  world.verdictUnder(R"("status": 599)");
  EXPECT_EQ(world.documents->waitForWrites(reports + 1, kTestPatience), reports + 1);
}

TEST(RoadUnderFaultsTest, BodyThatCannotBeJsonEndsInAnAnswerlessVerdict) {
  FaultyWorld world;
  VerdictInbox inbox;
  Json deep = Json::object();
  for (int i = 0; i < 200; ++i) {
    Json outer = Json::object();
    outer["inner"] = std::move(deep);
    deep = std::move(outer);
  }
  General general;
  general.setAdditionalData(deep);
  world.manager->getRiskForCheckPoint(general, inbox.completion());
  world.manager->getRiskForCheckPoint(Transaction({.amount = std::nan("")}), inbox.completion());
  for (const ReceivedVerdict& verdict : inbox.wait(2)) {
    EXPECT_EQ(verdict.level, RiskLevel::undefined);
    EXPECT_EQ(verdict.requestId.size(), 36U);
  }
  EXPECT_EQ(world.server.tally().calls.count("/" + std::string(kVerdictPath)), 0U);
}

TEST(RoadUnderFaultsTest, RequestOnAKeptConnectionIsSeenOnce) {
  FaultyWorld world;
  const auto calls = [&] {
    std::size_t count = 0;
    for (const auto& exchange : world.server.exchanges()) {
      count += exchange.path == "/" + std::string(kVerdictPath) ? 1U : 0U;
    }
    return count;
  };
  world.verdictUnder("");
  world.verdictUnder(R"("closeWithoutReply": true)");
  EXPECT_EQ(calls(), 2U);
  world.verdictUnder(R"("resetBeforeReply": true)");
  EXPECT_EQ(calls(), 3U);
}

TEST(RoadUnderFaultsTest, SixteenVerdictsInFlightTakeAboutOneLatency) {
  FaultyWorld world;
  world.verdictUnder("");
  world.server.setFaults(R"([{"path": "/)" + std::string(kVerdictPath) + R"(", "latency": 50}])");
  VerdictInbox inbox;
  const auto start = steady_clock::now();
  for (int i = 0; i < 16; ++i) world.manager->getRiskForCheckPoint(Launch(), inbox.completion());
  const auto verdicts = inbox.wait(16);
  const auto taken = steady_clock::now() - start;
  ASSERT_EQ(verdicts.size(), 16U);
  std::set<std::string> requests;
  for (const ReceivedVerdict& verdict : verdicts) requests.insert(verdict.requestId);
  EXPECT_EQ(requests.size(), 16U);
  EXPECT_GE(taken, 50ms);
  EXPECT_LT(taken, 16 * 50ms / 2);
  RecordProperty("milliseconds", static_cast<int>(taken / 1ms));
}

TEST(RoadUnderFaultsTest, HostCompletionThatBlocksHoldsUpNoOtherVerdict) {
  FaultyWorld world;
  std::promise<void> blocked;
  std::promise<void> release;
  world.manager->getRiskForCheckPoint(Launch(), [&](Risk, std::string, std::string) {
    blocked.set_value();
    release.get_future().wait();
  });
  ASSERT_EQ(blocked.get_future().wait_for(kTestPatience), std::future_status::ready);
  EXPECT_EQ(world.verdictUnder("").level, RiskLevel::low);
  release.set_value();
}

TEST(RoadUnderFaultsTest, RestartedServerIsFoundAgain) {
  FaultyWorld world;
  world.verdictUnder("");
  world.server.goDown();
  EXPECT_EQ(world.verdictUnder("").level, RiskLevel::undefined);
  world.server.comeUp();
  EXPECT_EQ(world.verdictUnder("").level, RiskLevel::low);
}

}  // namespace
}  // namespace quorvance
