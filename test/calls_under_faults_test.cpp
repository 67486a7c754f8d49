#include <gtest/gtest.h>

#include <chrono>
#include <future>

#include "platform/testing/memory_documents.h"
#include "test/real_world_test_support.h"
#include "test/watched_documents_test_support.h"

namespace quorvance {
namespace {

constexpr const char* kVerdictPath = "qrsk-med/3.0/GetCheckpointRisk/";

constexpr int kUsualTimeout = 10;  // seconds

/// A manager that has its configuration, over a server that can be made to fail. Its calls give up
/// after so many seconds.
struct FaultyWorld : RealWorld {
  std::shared_ptr<WatchedDocuments> documents =
      std::make_shared<WatchedDocuments>(std::make_shared<MemoryDocuments>());
  std::unique_ptr<QuorvanceManager> manager;

  explicit FaultyWorld(int timeout = kUsualTimeout) {
    server.setConfiguration(
        {{"timeout_connection", timeout}, {"tracing_manager", nlohmann::ordered_json::object()}});
    manager = std::make_unique<QuorvanceManager>(platformWith(documents));
    manager->setupWithServerUrl(server.url(), "anna");
    // The identifier is asked for the same way, so the configuration is in force once a
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

TEST(RoadUnderFaultsTest, EveryOutcomeIsAVerdictAndAReportOrNone) {
  const struct {
    const char* fault;
    RiskLevel level;
    bool isReported;
  } rows[] = {
      {R"("resetBeforeReply": true)", RiskLevel::undefined, true},
      {R"("closeWithoutReply": true)", RiskLevel::undefined, true},
      {R"("cutBody": 5)", RiskLevel::undefined, true},
      {R"("status": 201)", RiskLevel::undefined, true},
      {R"("status": 301, "headers": {"Location": "/elsewhere"})", RiskLevel::undefined, true},
      {R"("status": 500)", RiskLevel::undefined, true},
      {R"("bodyBytes": "7b2261223a22ff227d")", RiskLevel::undefined, true},
      {R"("oversize": 9437184)", RiskLevel::undefined, true},
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
  for (const auto& row : rows) {
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

TEST(RoadUnderFaultsTest, CallsThatTakeTooLongAreGivenUpAndReported) {
  FaultyWorld world(1);
  for (const std::string fault : {R"("hang": true)", R"("trickle": 1)"}) {
    const ReceivedVerdict verdict = world.verdictUnder(fault);
    EXPECT_EQ(verdict.level, RiskLevel::undefined) << fault;
    EXPECT_FALSE(verdict.requestId.empty()) << fault;
  }
  EXPECT_EQ(world.documents->waitForWrites(2, kTestPatience), 2U);
}

TEST(RoadUnderFaultsTest, ServerThatIsNotThereEndsInAnAnswerlessVerdict) {
  FaultyWorld world;
  const std::pair<const char*, bool> urls[] = {{"http://127.0.0.1:1/", true},
                                               {"http://no-such-host.invalid/", true},
                                               {"127.0.0.1/", true},
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

// One after the other they would not all be there: each ends after the timeout alone.
TEST(RoadUnderFaultsTest, SixteenVerdictsAreUnderWayAtATime) {
  FaultyWorld world;
  world.server.setFaults(R"([{"path": "/)" + std::string(kVerdictPath) + R"(", "hang": true}])");
  VerdictInbox inbox;
  const std::uint64_t before = world.server.tally().faultsApplied;
  for (int i = 0; i < 16; ++i) world.manager->getRiskForCheckPoint(Launch(), inbox.completion());
  EXPECT_TRUE(world.server.waitForAppliedFaults(before + 16, kTestPatience));
  world.server.goDown();
  EXPECT_EQ(inbox.wait(16).size(), 16U);
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

}  // namespace
}  // namespace quorvance
