#include "core/report_uploader.h"

#include <gmock/gmock.h>

#include "core/manager_world_test_support.h"
#include "quorvance/account_check_points.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

/// A manager that is set up.
struct UploadWorld : ManagerWorld {
  UploadWorld() { setup(); }
};

TEST(UploaderTest, SendsEachFileOnceAndRemovesWhatWasTaken) {
  UploadWorld world;
  world.put({"activity1.json"});
  world.put({"activity2.json"}, R"({"keys":"theirs","session":0,"version":"4"})");
  world.put({"crash1.json"});
  world.http->answerOnce(ManagerWorld::kActivityPath, statusReply(503));
  world.manager->arriveToCheckPoint(Launch());
  // The call itself has read nothing.
  EXPECT_EQ(world.documents->reads, 0);
  world.time->run();
  const auto sent = world.http->sentTo(ManagerWorld::kActivityPath);
  ASSERT_EQ(sent.size(), 2U);
  EXPECT_EQ(textOf(sent[0].body["kept"]), "1");
  EXPECT_EQ(textOf(sent[1].body["version"]), R"("1.0.0")");
  EXPECT_TRUE(sent[1].body["keys"].is_object());
  EXPECT_NE(sent[0].body["keys"]["requestID"], sent[1].body["keys"]["requestID"]);
  EXPECT_EQ(findMember(sent[0].body["keys"], "checkpoint"), nullptr);
  // The refused one stays for the next upload; its neighbour and the other category had nothing to
  // do with it. Its failure made no report.
  EXPECT_THAT(world.documents->files,
              ElementsAre(testing::Key("activity1.json"), testing::Key("crash1.json")));
  world.manager->arriveToCheckPoint(Launch());
  world.time->run();
  EXPECT_EQ(world.documents->count("activity"), 0U);
}

// A process that ends while the next one is read must not send the first again.
TEST(UploaderTest, ReportThatWasTakenIsGoneBeforeTheNextIsRead) {
  struct CountingDocuments : MemoryDocuments {
    std::vector<std::size_t> thereAtRead;
    DocumentRead read(const std::string& name, std::string& bytes) override {
      thereAtRead.push_back(count("activity"));
      return MemoryDocuments::read(name, bytes);
    }
  };
  const auto counting = std::make_shared<CountingDocuments>();
  UploadWorld world;
  world.documents = counting;
  world.restart();
  world.setup();
  world.put({"activity1.json", "activity2.json", "activity3.json"});
  world.manager->arriveToCheckPoint(Launch());
  world.time->run();
  EXPECT_THAT(counting->thereAtRead, ElementsAre(3, 2, 1));
}

TEST(UploaderTest, RunOfAnotherProcessIsLeftToItAndTheNextAskTriesAgain) {
  UploadWorld world;
  world.put({"activity1.json"});
  world.documents->lockedElsewhere = {"upload-activity"};
  world.manager->arriveToCheckPoint(Launch());
  world.time->run();
  EXPECT_EQ(world.http->countTo(ManagerWorld::kActivityPath), 0U);
  world.documents->lockedElsewhere.clear();
  world.manager->arriveToCheckPoint(Launch());
  world.time->run();
  EXPECT_EQ(world.http->countTo(ManagerWorld::kActivityPath), 1U);
  EXPECT_EQ(world.documents->count("activity"), 0U);
}

TEST(UploaderTest, FailedUploadOfACrashIsReportedAndOfAnErrorIsNot) {
  UploadWorld world;
  world.put({"crash1.json"});
  world.put({"communicationError1.json"});
  world.http->answer(ManagerWorld::kDevicePath, okReply(R"({"deviceID":"d"})"));
  world.http->answer(ManagerWorld::kErrorPath, statusReply(500));
  world.http->answer(ManagerWorld::kCrashPath, statusReply(500));
  world.manager->initializeDeviceId();
  world.time->run();
  EXPECT_EQ(world.http->countTo(ManagerWorld::kErrorPath), 1U);
  EXPECT_EQ(world.http->countTo(ManagerWorld::kCrashPath), 1U);
  EXPECT_EQ(world.documents->count("crash"), 1U);
  // The first one is the old one, the second tells of the crash report's failure.
  EXPECT_EQ(world.documents->count("communicationError"), 2U);
}

TEST(UploaderTest, RunsNeverOverlapAndAsksMeanwhileBecomeOneUnderTheEarliest) {
  UploadWorld world;
  world.put({"activity1.json", "activity2.json"});
  world.http->answer(ManagerWorld::kActivityPath, statusReply(500));
  world.time->hold(WorkLane::files);
  for (const char* user : {"u1", "u2", "u3", "u4"}) {
    world.manager->configureUserId(user);
    world.manager->arriveToCheckPoint(Launch());
  }
  world.time->release(WorkLane::files);
  world.time->run();
  EXPECT_THAT(world.usersSentTo(ManagerWorld::kActivityPath), ElementsAre("u1", "u1", "u2", "u2"));
}

TEST(UploaderTest, AskOfACheckpointWakesNobodyAndKeepsItsPlaceBeforeThatOfALogout) {
  UploadWorld world;
  world.put({"activity1.json"});
  world.http->answer(ManagerWorld::kActivityPath, statusReply(500));
  world.time->run();
  const std::size_t waiting = world.time->waiting();
  world.manager->arriveToCheckPoint(Launch());
  EXPECT_EQ(world.time->waiting(), waiting + 1) << "the request is one post";
  world.manager->configureUserId("u2");
  world.manager->logout();
  world.time->run();
  EXPECT_THAT(world.usersSentTo(ManagerWorld::kActivityPath), ElementsAre("u1", "u2"));
}

TEST(UploaderTest, GoesOnAfterAUrlThatDoesNotParse) {
  UploadWorld world;
  world.put({"activity1.json", "activity2.json"});
  world.manager->identity().setServerUrl("no url");
  world.manager->arriveToCheckPoint(Launch());
  world.time->run();
  EXPECT_THAT(world.http->sentTo(ManagerWorld::kActivityPath), IsEmpty());
  world.manager->identity().setServerUrl(ManagerWorld::kServer);
  world.manager->arriveToCheckPoint(Launch());
  world.time->run();
  EXPECT_EQ(world.http->countTo(ManagerWorld::kActivityPath), 2U);
  EXPECT_THAT(world.documents->files, IsEmpty());
}

TEST(UploaderTest, FailedCallStoresAReportThatGoesOutWithTheNextIdentifier) {
  UploadWorld world;
  world.http->answer(ManagerWorld::kRiskPath, refusedReply());
  world.http->answer(ManagerWorld::kDevicePath, okReply(R"({"deviceID":"d"})"));
  int verdicts = 0;
  world.manager->getRiskForCheckPoint(Launch(),
                                      [&](Risk, std::string, std::string) { ++verdicts; });
  world.time->run();
  EXPECT_EQ(verdicts, 1);
  EXPECT_EQ(world.documents->count("communicationError"), 1U);
  world.manager->initializeDeviceId();
  world.time->run();
  ASSERT_EQ(world.http->countTo(ManagerWorld::kErrorPath), 1U);
  EXPECT_EQ(textOf(world.http->sentTo(ManagerWorld::kErrorPath)[0].body["error_stack"]),
            R"("http://risk.test/qrsk-med/3.0/GetCheckpointRisk/")");
  EXPECT_EQ(world.documents->count("communicationError"), 0U);
}

TEST(UploaderTest, FolderThatNeverAnswersHoldsUpNoVerdict) {
  UploadWorld world;
  world.put({"activity1.json"});
  world.time->hold(WorkLane::files);
  world.http->answer(ManagerWorld::kRiskPath, okReply(R"({"risk":1})"));
  std::string level;
  world.manager->getRiskForCheckPoint(
      Launch(), [&](Risk risk, std::string, std::string) { level = risk.stringValue(); });
  world.time->run();
  EXPECT_EQ(level, "MEDIUM");
}

}  // namespace
}  // namespace quorvance
