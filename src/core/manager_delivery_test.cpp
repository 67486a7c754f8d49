#include <gmock/gmock.h>

#include <cmath>

#include "core/manager_world_test_support.h"
#include "quorvance/account_check_points.h"
#include "quorvance/transaction.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

VerdictCompletion keepIn(std::vector<Verdict>& verdicts) {
  return [&verdicts](Verdict verdict) { verdicts.push_back(std::move(verdict)); };
}

HttpReply faultyReply(TransportFault fault) {
  HttpReply reply = refusedReply();
  reply.fault = fault;
  return reply;
}

TEST(DeliveryTest, AVerdictTellsWhyThereIsNone) {
  using Reason = VerdictReason;
  const std::vector<std::tuple<HttpReply, Reason, std::optional<int>, const char*>> cases = {
      {okReply(R"({"risk":3,"signedRisk":"s"})"), Reason::answered, 200, "VERY_HIGH"},
      {okReply(R"({"risk":-1})"), Reason::answered, 200, "undefined"},
      {okReply(R"({"risk":4})"), Reason::unreadable, 200, "undefined"},
      {okReply("[]"), Reason::unreadable, 200, "undefined"},
      {okReply("no json"), Reason::unreadable, 200, "undefined"},
      {okReply("{\"risk\":3,\"x\":\"\xFF\"}"), Reason::unreadable, 200, "undefined"},
      {statusReply(403, R"({"risk":3})"), Reason::refused, 403, "undefined"},
      {faultyReply(TransportFault::timedOut), Reason::timedOut, {}, "undefined"},
      {faultyReply(TransportFault::unreachable), Reason::unreachable, {}, "undefined"},
      {faultyReply(TransportFault::certificate), Reason::certificate, {}, "undefined"},
      {faultyReply(TransportFault::notSent), Reason::cannotBeSent, {}, "undefined"},
  };
  for (const auto& [reply, reason, status, level] : cases) {
    ManagerWorld world;
    world.http->answer(ManagerWorld::kRiskPath, reply);
    world.setup();
    std::vector<Verdict> verdicts;
    world.manager->getRiskForCheckPoint(Launch(), {}, keepIn(verdicts));
    EXPECT_THAT(verdicts, IsEmpty());
    world.time->run();
    ASSERT_EQ(verdicts.size(), 1U);
    EXPECT_EQ(toString(verdicts[0].reason), toString(reason)) << level;
    EXPECT_EQ(verdicts[0].httpStatus, status);
    EXPECT_EQ(verdicts[0].risk.stringValue(), level);
    EXPECT_EQ(verdicts[0].signedRisk == "s", reason == Reason::answered && level[0] == 'V');
    EXPECT_EQ(verdicts[0].requestID.size(), 36U);
  }
}

TEST(DeliveryTest, WhatIsNeverSentSaysSo) {
  ManagerWorld world;
  std::vector<Verdict> verdicts;
  world.http->answer(ManagerWorld::kRiskPath, faultyReply(TransportFault::notSent));
  world.manager->getRiskForCheckPoint(Launch(), {}, keepIn(verdicts));
  world.time->run();
  world.setup();
  world.manager->getRiskForCheckPoint(Transaction({.amount = std::nan("")}), {}, keepIn(verdicts));
  world.manager->identity().setServerUrl("http://risk.test/%zz/");
  world.manager->getRiskForCheckPoint(Launch(), {}, keepIn(verdicts));
  world.time->run();
  ASSERT_EQ(verdicts.size(), 3U);
  EXPECT_EQ(verdicts[0].reason, VerdictReason::notSetUp);
  EXPECT_EQ(verdicts[1].reason, VerdictReason::cannotBeSent);
  EXPECT_EQ(verdicts[2].reason, VerdictReason::cannotBeSent);
  EXPECT_EQ(world.manager->status().lastFailure->service, "GetCheckpointRisk");
}

TEST(DeliveryTest, ADeadlineEndsTheWaitAndNotTheExchange) {
  ManagerWorld world;
  world.setup();
  world.time->run();
  std::vector<Verdict> answered;
  world.http->answer(ManagerWorld::kRiskPath, okReply(R"({"risk":0})"));
  for (const auto deadline : {1ms, 1000ms, std::chrono::milliseconds::max()}) {
    world.manager->getRiskForCheckPoint(Launch(), {.deadline = deadline}, keepIn(answered));
  }
  world.time->run();
  world.time->advance(1h);
  ASSERT_EQ(answered.size(), 3U);
  for (const Verdict& verdict : answered) EXPECT_EQ(verdict.reason, VerdictReason::answered);

  // Not yet sent: the network's thread is busy for ever.
  world.http->neverAnswer();
  std::vector<Verdict> late;
  const auto ask = [&](std::chrono::milliseconds deadline) {
    world.manager->getRiskForCheckPoint(Launch(), {.deadline = deadline}, keepIn(late));
    EXPECT_THAT(late, IsEmpty());
  };
  ask(200ms);
  world.time->advance(199ms);
  EXPECT_THAT(late, IsEmpty());
  world.time->advance(1ms);
  ASSERT_THAT(late, SizeIs(1));
  EXPECT_EQ(late[0].reason, VerdictReason::timedOut);
  EXPECT_EQ(late[0].requestID.size(), 36U);
  EXPECT_EQ(world.manager->pending(), 2U);  // the exchange, and a look for stored reports after it
  world.http->dropAll();
  world.time->advance(1h);
  EXPECT_THAT(late, SizeIs(1));
  EXPECT_EQ(world.manager->pending(), 0U);

  for (const auto atOnce : {0ms, -1ms, std::chrono::milliseconds::min()}) {
    late.clear();
    ask(atOnce);
    world.time->run();
    EXPECT_THAT(late, SizeIs(1));
  }
}

TEST(DeliveryTest, PendingLastsUntilAnsweredOrStored) {
  ManagerWorld world;
  EXPECT_EQ(world.manager->pending(), 0U);
  EXPECT_TRUE(world.manager->flush(0ms));
  world.setup();
  world.time->run();
  world.http->answer(ManagerWorld::kEventPath, statusReply(500));
  world.time->hold(WorkLane::files);
  world.manager->arriveToCheckPoint(Launch());
  EXPECT_FALSE(world.manager->flush(0ms));
  world.time->run();
  // Answered, and told in a report that waits for the disk.
  EXPECT_THAT(world.documents->files, IsEmpty());
  EXPECT_FALSE(world.manager->flush(0ms));
  world.time->release(WorkLane::files);
  world.time->run();
  EXPECT_THAT(world.documents->files, SizeIs(1));
  EXPECT_TRUE(world.manager->flush(0ms));
  EXPECT_EQ(world.manager->pending(), 0U);
  // A session waits for facts first.
  world.time->hold(WorkLane::facts);
  world.manager->logout();
  world.time->run();
  EXPECT_EQ(world.http->countTo(ManagerWorld::kSessionPath), 0U);
  EXPECT_FALSE(world.manager->flush(0ms));
  world.time->advance(2s);
  EXPECT_EQ(world.http->countTo(ManagerWorld::kSessionPath), 1U);
  EXPECT_TRUE(world.manager->flush(0ms));
}

TEST(DeliveryTest, NobodyWaitsForRetriesAndTraces) {
  ManagerWorld world;
  world.configure(ManagerWorld::kTraceManager);
  world.http->answer(ManagerWorld::kSessionPath, refusedReply());
  world.manager->sendDataWithNewSession();
  world.time->advance(2s);
  EXPECT_TRUE(world.manager->flush(0ms));
  world.http->neverAnswer();
  const std::size_t sent = world.http->sent().size();
  world.time->advance(1min);
  EXPECT_TRUE(world.manager->flush(0ms));
  EXPECT_EQ(world.http->sent().size(), sent);  // both are under way, on a thread that hangs
  world.manager->arriveToCheckPoint(Launch());
  world.time->run();
  EXPECT_FALSE(world.manager->flush(0ms));
}

TEST(DeliveryTest, WhatAnIdentifierBringsAboutIsPendingWithIt) {
  ManagerWorld world;
  world.setup();
  world.time->run();
  world.http->answer(ManagerWorld::kDevicePath, okReply(R"({"deviceID":"D-1"})"));
  world.time->hold(WorkLane::facts);
  std::vector<std::string> told;
  const auto keep = [&](std::string deviceId) {
    // It would wait for itself.
    EXPECT_FALSE(world.manager->flush(1h));
    told.push_back(std::move(deviceId) + world.store->read("deviceId").text);
  };
  world.manager->onDeviceIdentifier(keep);
  world.manager->onDeviceIdentifier(nullptr);
  world.time->run();
  EXPECT_THAT(told, IsEmpty());
  world.manager->initializeDeviceId();
  world.time->run();
  EXPECT_THAT(told, ElementsAre("D-1D-1"));
  EXPECT_EQ(world.manager->pending(), 1U);
  world.time->advance(2s);
  EXPECT_EQ(world.http->countTo(ManagerWorld::kSessionPath), 1U);
  EXPECT_EQ(world.manager->pending(), 0U);
  world.manager->initializeDeviceId();
  world.time->run();
  EXPECT_THAT(told, SizeIs(1));
  world.restart();
  world.manager->onDeviceIdentifier(keep);
  EXPECT_THAT(told, SizeIs(1));
  world.time->run();
  EXPECT_THAT(told, ElementsAre("D-1D-1", "D-1D-1"));
}

TEST(DeliveryTest, AfterAShutdownNothingIsAcceptedAndNothingAskedAgain) {
  ManagerWorld world;
  world.http->answer(ManagerWorld::kConfigurationPath, okReply(ManagerWorld::kTraceManager));
  world.http->answer(ManagerWorld::kDevicePath, refusedReply());
  world.http->answer(ManagerWorld::kSessionPath, refusedReply());
  QuorvanceManager manager([&] {
    Platform seam = world.platform();
    seam.crashTrap = world.trap;
    return seam;
  }());
  manager.setupWithServerUrl(ManagerWorld::kServer, "u1");
  world.time->run();
  manager.initializeDeviceId();
  manager.sendDataWithNewSession();
  manager.arriveToCheckPoint(Launch());
  EXPECT_FALSE(manager.shutdown(0ms));
  EXPECT_TRUE(manager.status().isShutDown);
  world.time->advance(2s);  // what was accepted goes on
  EXPECT_EQ(world.http->countTo(ManagerWorld::kEventPath), 1U);
  EXPECT_EQ(world.http->countTo(ManagerWorld::kSessionPath), 1U);
  EXPECT_TRUE(manager.shutdown(0ms));

  const std::size_t sent = world.http->sent().size();
  std::vector<Verdict> verdicts;
  manager.getRiskForCheckPoint(Launch(), {}, keepIn(verdicts));
  int plain = 0;
  manager.getRiskForCheckPoint(Launch(), [&](Risk, std::string, std::string) { ++plain; });
  std::future<Verdict> future = manager.riskForCheckPoint(Launch());
  EXPECT_FALSE(manager.setupWithServerUrl(ManagerWorld::kServer, "u2"));
  manager.arriveToCheckPoint(Launch());
  manager.updateCheckPointStatus(CheckPointType::LOGIN, "R", CheckPointStatus::APPROVED, {});
  manager.logout();
  manager.startNewScreenListener(ScreenListenerType::GENERAL, 1, nullptr)->finishScreenListener();
  EXPECT_THAT(verdicts, IsEmpty());
  world.time->advance(1h);
  ASSERT_THAT(verdicts, SizeIs(1));
  EXPECT_EQ(verdicts[0].reason, VerdictReason::shutDown);
  EXPECT_EQ(plain, 1);
  EXPECT_EQ(future.get().reason, VerdictReason::shutDown);
  EXPECT_EQ(world.http->sent().size(), sent);
  EXPECT_EQ(world.time->waiting(), 0U);
  EXPECT_EQ(manager.userId(), "u1");
}

TEST(DeliveryTest, AFutureKeepsItsPromiseWhateverIsDropped) {
  std::future<Verdict> future;
  {
    TestWorld world;
    QuorvanceManager manager(world.platform());
    world.http->neverAnswer();
    future = manager.riskForCheckPoint(Launch());
    world.time->close();
    world.http->dropAll();
  }
  const Verdict verdict = future.get();
  EXPECT_EQ(verdict.reason, VerdictReason::givenUp);
  EXPECT_EQ(verdict.signedRisk, "-1");
}

TEST(DeliveryTest, TheLedgerTellsWhatBecameOfThings) {
  ManagerWorld world;
  DeliveryStatus status = world.manager->status();
  EXPECT_FALSE(status.isConfigured || status.hasDeviceIdentifier || status.isSessionAccepted);
  EXPECT_FALSE(status.lastSuccess || status.lastFailure || status.urlFault);
  world.http->answer(ManagerWorld::kDevicePath, okReply(R"({"deviceID":"D-1"})"));
  world.http->answer(ManagerWorld::kSessionPath, okReply(R"({"response":"OK"})"));
  world.put({"activity1.json"});
  world.put({"activity2.json"}, "torn");
  world.setup();
  world.manager->initializeDeviceId();
  world.time->advance(2s);
  const auto success =
      DeliveryStatus::Time(std::chrono::milliseconds(world.time->nowMilliseconds()));
  world.time->advance(1s);
  for (int i = 0; i < 49; ++i) world.documents->files["communicationError" + std::to_string(i)];
  world.http->answer(ManagerWorld::kEventPath, statusReply(403));
  world.manager->arriveToCheckPoint(Launch());
  world.time->run();
  world.manager->arriveToCheckPoint(Launch());
  world.time->run();
  status = world.manager->status();
  EXPECT_TRUE(status.isConfigured && status.hasDeviceIdentifier && status.isSessionAccepted);
  EXPECT_LE(success, *status.lastSuccess);
  ASSERT_TRUE(status.lastFailure);
  EXPECT_EQ(status.lastFailure->time - DeliveryStatus::Time(),
            std::chrono::milliseconds(world.time->nowMilliseconds()));
  EXPECT_EQ(status.lastFailure->reason, VerdictReason::refused);
  EXPECT_EQ(status.lastFailure->httpStatus, 403);
  EXPECT_EQ(status.lastFailure->service, "SendCheckpointEvent");
  EXPECT_EQ(status.reports.stored, 1U);
  EXPECT_EQ(status.reports.droppedFull, 1U);
  EXPECT_EQ(status.reports.sent, 1U);
  EXPECT_EQ(status.reports.unreadable, 1U);
}

TEST(DeliveryTest, AUrlThatCannotWorkIsTold) {
  const std::vector<std::pair<const char*, bool>> urls = {{"https://risk.bank.example/", true},
                                                          {"HTTP://[::1]:8080/a/", true},
                                                          {"not a url", false},
                                                          {"ftp://x/", false},
                                                          {"https://u@risk.test/", false},
                                                          {"https:///", false},
                                                          {"https://:80/", false},
                                                          {"https://risk.test", false},
                                                          {"https://risk.test/%zz/", false},
                                                          {"risk.test/", false}};
  for (const auto& [url, works] : urls) {
    ManagerWorld world;
    const DebugLines lines;
    EXPECT_TRUE(world.manager->setup(url, "u1", nullptr));
    EXPECT_EQ(world.manager->status().urlFault == std::nullopt, works) << url;
    EXPECT_EQ(lines.contain("the server's URL cannot work"), !works) << url;
  }
}

}  // namespace
}  // namespace quorvance
