#include <gmock/gmock.h>

#include <cmath>
#include <functional>

#include "core/manager_world_test_support.h"
#include "quorvance/account_check_points.h"
#include "quorvance/transaction.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

struct HandedVerdict {
  std::string level;
  std::string signedRisk;
  std::string requestId;
};

RiskCompletion keepVerdicts(std::vector<HandedVerdict>& verdicts) {
  return [&verdicts](Risk risk, std::string signedRisk, std::string requestId) {
    verdicts.push_back({risk.stringValue(), std::move(signedRisk), std::move(requestId)});
  };
}

std::shared_ptr<User> userNamed(std::string id) {
  return std::make_shared<User>(User{.userId = std::move(id)});
}

TEST(CheckpointTest, VerdictIsReadFromTheReply) {
  const std::vector<std::tuple<HttpReply, std::string, std::string, std::string>> replies = {
      {okReply(R"({"risk":3,"signedRisk":"s","requestID":"r"})"), "VERY_HIGH", "s", "r"},
      {okReply(R"({"risk":-2,"signedRisk":7,"requestID":7})"), "expire", "-1", ""},
      {okReply(R"({"risk":4})"), "undefined", "-1", ""},
      {okReply(R"({"risk":-3})"), "undefined", "-1", ""},
      {okReply(R"({"risk":"2"})"), "undefined", "-1", ""},
      {okReply(R"({"risk":1.0})"), "undefined", "-1", ""},
      {okReply("[]"), "undefined", "-1", ""},
      {okReply("no json"), "undefined", "-1", ""},
      {statusReply(500, R"({"risk":3,"requestID":"r"})"), "undefined", "-1", ""},
      {refusedReply(), "undefined", "-1", ""},
  };
  for (const auto& [reply, level, signedRisk, requestId] : replies) {
    ManagerWorld world;
    world.http->answer(ManagerWorld::kRiskPath, reply);
    world.setup();
    std::vector<HandedVerdict> verdicts;
    world.manager->getRiskForCheckPoint(Launch(), keepVerdicts(verdicts));
    EXPECT_THAT(verdicts, IsEmpty());
    world.time->run();
    ASSERT_EQ(verdicts.size(), 1U);
    EXPECT_EQ(verdicts[0].level, level);
    EXPECT_EQ(verdicts[0].signedRisk, signedRisk);
    const std::string own =
        *findText(world.http->sentTo(ManagerWorld::kRiskPath)[0].body["keys"], "requestID");
    EXPECT_EQ(verdicts[0].requestId, requestId.empty() ? own : requestId);
  }
}

TEST(CheckpointTest, LoginChangesTheStoredUserBeforeTheBodyIsBuilt) {
  ManagerWorld world;
  world.setup("before");
  world.time->run();
  world.manager->arriveToCheckPoint(Login(userNamed("måns 1/2")));
  EXPECT_EQ(world.store->read("user_id").text, "måns 1/2");
  world.time->run();
  const Json body = world.http->sentTo(ManagerWorld::kEventPath)[0].body;
  EXPECT_EQ(textOf(body["keys"]["user_id"]), R"("m%C3%A5ns%201/2")");
  EXPECT_EQ(textOf(body["LOGIN"]["user"]["user_id"]), R"("måns 1/2")");
  // Only the two that sign in do so, told by their class.
  world.manager->arriveToCheckPoint(General("g"));
  world.manager->arriveToCheckPoint(PasswordChange(userNamed("p")));
  world.manager->arriveToCheckPoint(CheckPoint(CheckPointType::LOGIN));
  world.manager->arriveToCheckPoint(Login(nullptr));
  EXPECT_EQ(world.store->read("user_id").text, "måns 1/2");
  world.manager->arriveToCheckPoint(Register(userNamed("r")));
  EXPECT_EQ(world.manager->identity().userId(), "r");
}

// A bus that hangs holds up nothing either.
TEST(CheckpointTest, TellsThePermissionsAndThePlaceOfItsMoment) {
  ManagerWorld world;
  world.time->hold(WorkLane::facts);
  const auto told = [&] {
    world.manager->arriveToCheckPoint(Launch());
    world.time->run();
    Json data =
        world.http->sentTo(ManagerWorld::kEventPath).back().body["checkpoint_additional_data"];
    data.erase("collectTime");
    return textOf(data);
  };
  const std::string others = R"("PHOTO","READ_CONTACTS",)";
  world.setup();
  world.authorization->answers[AuthorizationSubject::camera] = AuthorizationStatus::authorized;
  EXPECT_EQ(told(), R"({"permissions":["CAMERA"],"ignorePermissions":["AUTHORIZED_WHEN_IN_USE",)"
                    R"("AUTHORIZED_ALWAYS",)" +
                        others + R"("CALENDAR","REMINDER"],"askedPermissions":[]})");
  world.authorization->answers = {
      {AuthorizationSubject::location, AuthorizationStatus::authorizedWhenInUse}};
  world.location->fix = LocationFix{.latitude = 47.5};
  world.manager->onRequestAccess(MobilePermission::PHOTO);
  EXPECT_EQ(told(), R"({"location":{"latitude":47.5},"permissions":["AUTHORIZED_WHEN_IN_USE"],)"
                    R"("ignorePermissions":[)" +
                        others +
                        R"("CAMERA","CALENDAR","REMINDER"],"askedPermissions":["PHOTO"]})");
}

TEST(CheckpointTest, StepsComeInTheirOrder) {
  ManagerWorld world;
  world.configure(ManagerWorld::kTraceManager);
  world.put({"activity1.json"});
  world.context->tracing->clear();
  world.manager->getRiskForCheckPoint(Login(userNamed("u2")), nullptr);
  EXPECT_THAT(world.traces(), ElementsAre("getRiskForCheckPoint Start", "configureUserId Start",
                                          "configure(userId:) Start", "configure(userId:) End",
                                          "configureUserId End", "getRiskForCheckPoint End"));
  const Json entries = world.context->tracing->entries();
  EXPECT_EQ(entries[0]["paramList"], entries[1]["paramList"]);
  EXPECT_EQ(*entries[0]["paramList"][0].get_ptr<const std::string*>(),
            textOf(Login(userNamed("u2")).getJson()));
  world.time->run();
  EXPECT_THAT(world.usersSentTo(ManagerWorld::kActivityPath), ElementsAre("u1"));
  EXPECT_THAT(world.usersSentTo(ManagerWorld::kRiskPath), ElementsAre("u2"));
  EXPECT_EQ(world.traces().size(), 6U);
  // The activity of the one who was there goes out under that user.
  EXPECT_THAT(world.usersSentTo(ManagerWorld::kActivityPath), ElementsAre("u1"));
  EXPECT_THAT(world.usersSentTo(ManagerWorld::kRiskPath), ElementsAre("u2"));
  world.manager->arriveToCheckPoint(Launch());
  world.time->run();
  EXPECT_EQ(world.traces().back(), "arriveToCheckPoint Middle");
}

// A hundred thousand entries may wait to be sent, and a checkpoint's text is long.
TEST(CheckpointTest, AllTraceEntriesShareOneText) {
  ManagerWorld world;
  world.configure(ManagerWorld::kTraceManager);
  world.http->answer(ManagerWorld::kRiskPath, okReply("{}"));
  const Login login(userNamed("a"));
  const std::vector<std::function<void()>> calls = {
      [&] { world.manager->getRiskForCheckPoint(login, nullptr); },
      [&] { world.manager->arriveToCheckPoint(login); }};
  for (const auto& call : calls) {
    world.context->tracing->clear();
    call();
    std::vector<TraceArguments> arguments;
    for (const auto& entry : world.context->tracing->snapshot()) {
      const LoggingData& record = std::get<LoggingData>(entry);
      if (record.call->methodName != "configure(userId:)") {
        arguments.push_back(record.call->paramList);
      }
    }
    ASSERT_EQ(arguments.size(), 4U);  // the operation's own, and the taking of the user in it
    EXPECT_THAT(arguments, testing::Each(arguments[0]));
    EXPECT_THAT(*arguments[0], ElementsAre(textOf(login.getJson())));
  }
}

TEST(CheckpointTest, BodyFollowsTheTypeAndUpdateDetailsCarriesNoDeviceData) {
  ManagerWorld world;
  world.setup();
  General general;
  general.setType(CheckPointType::PASSWORD_CHANGE);
  world.manager->arriveToCheckPoint(general);
  world.manager->arriveToCheckPoint(CheckPoint(CheckPointType::UPDATE_DETAILS));
  world.time->run();
  const auto sent = world.http->sentTo(ManagerWorld::kEventPath);
  ASSERT_EQ(sent.size(), 2U);
  EXPECT_EQ(textOf(sent[0].body["PASSWORD_CHANGE"]), R"({"checkpoint_type":"GENERAL"})");
  EXPECT_EQ(textOf(sent[0].body["keys"]["checkpoint"]), R"("PASSWORD_CHANGE")");
  EXPECT_THAT(keysOf(sent[0].body), ElementsAre("session", "checkpoint_additional_data",
                                                "PASSWORD_CHANGE", "keys", "version"));
  EXPECT_THAT(keysOf(sent[1].body), ElementsAre("UPDATE_DETAILS", "keys", "session", "version"));
}

TEST(CheckpointTest, EveryVerdictComesExactlyOnce) {
  ManagerWorld world;
  world.setup();
  std::vector<HandedVerdict> verdicts;
  // A body that cannot be JSON, then a URL that does not parse: neither is ever sent.
  world.manager->getRiskForCheckPoint(Transaction({.amount = std::nan("")}),
                                      keepVerdicts(verdicts));
  world.manager->identity().setServerUrl("http://risk.test/%zz/");
  world.manager->getRiskForCheckPoint(Launch(), keepVerdicts(verdicts));
  world.time->run();
  EXPECT_EQ(world.http->countTo(ManagerWorld::kRiskPath), 0U);
  ASSERT_EQ(verdicts.size(), 2U);
  EXPECT_EQ(verdicts[0].level, "undefined");
  EXPECT_EQ(verdicts[0].requestId.size(), 36U);
  EXPECT_NE(verdicts[0].requestId, verdicts[1].requestId);
  world.time->advance(1h);
  EXPECT_EQ(verdicts.size(), 2U);
}

TEST(CheckpointTest, OutcomeCarriesTheHostsRequestAndATransactionOnlyForTransactions) {
  ManagerWorld world;
  world.configure(ManagerWorld::kTraceManager);
  world.context->tracing->clear();
  world.manager->updateCheckPointStatus(CheckPointType::LOGIN, "R-1", CheckPointStatus::DENIED,
                                        "T-1");
  world.manager->updateCheckPointStatus(CheckPointType::TRANSACTION, "R-2",
                                        CheckPointStatus::APPROVED, "T-2");
  world.manager->updateCheckPointStatus(CheckPointType::TRANSACTION, "R-3",
                                        CheckPointStatus::CANCELLED, std::nullopt);
  world.time->run();
  const auto sent = world.http->sentTo(ManagerWorld::kResultPath);
  ASSERT_EQ(sent.size(), 3U);
  EXPECT_EQ(textOf(sent[0].body["transactionUpdate"]), R"({"requestID":"R-1","status":"DENIED"})");
  EXPECT_EQ(textOf(sent[1].body["transactionUpdate"]),
            R"({"requestID":"R-2","transactionID":"T-2","status":"APPROVED"})");
  EXPECT_EQ(textOf(sent[2].body["transactionUpdate"]),
            R"({"requestID":"R-3","status":"CANCELLED"})");
  EXPECT_EQ(textOf(sent[1].body["keys"]["requestID"]), R"("R-2")");
  EXPECT_EQ(findMember(sent[1].body["keys"], "checkpoint"), nullptr);
  // The dropped identifier still stands among the traced arguments.
  EXPECT_EQ(textOf(world.context->tracing->entries()[0]["paramList"]),
            R"(["LOGIN","R-1","DENIED","T-1"])");
}

// Traced or not.
TEST(CheckpointDeathTest, AnOutcomeOfATypeOutsideTheVocabularyStopsTheProcess) {
  ManagerWorld world;
  EXPECT_DEATH(world.manager->updateCheckPointStatus(static_cast<CheckPointType>(42), "R",
                                                     CheckPointStatus::APPROVED, std::nullopt),
               "fatal");
}

TEST(CheckpointTest, BadlyEncodedUserCostsNoVerdict) {
  ManagerWorld world;
  world.http->answer(ManagerWorld::kRiskPath, okReply(R"({"risk":1})"));
  world.setup("u\xFF");
  std::vector<HandedVerdict> verdicts;
  world.manager->getRiskForCheckPoint(Login(userNamed("u\xFF")), keepVerdicts(verdicts));
  world.time->run();
  ASSERT_EQ(verdicts.size(), 1U);
  EXPECT_EQ(verdicts[0].level, "MEDIUM");
  const Json body = world.http->sentTo(ManagerWorld::kRiskPath)[0].body;
  EXPECT_EQ(textOf(body["keys"]["user_id"]), R"("u%EF%BF%BD")");
}

}  // namespace
}  // namespace quorvance
