#include <gmock/gmock.h>

#include <future>

#include "test/real_world_test_support.h"

namespace quorvance {
namespace {

using testing::ElementsAre;

TEST(FirstVerdictTest, JourneyOfANewInstallationReachesTheServerByteForByte) {
  RealWorld world;
  QuorvanceManager manager(world.platform());
  ASSERT_TRUE(manager.setupWithServerUrl(world.server.url(), "anna"));
  ASSERT_TRUE(world.sees("qrsk-med/3.0/getSdkConfiguration/"));
  manager.initializeDeviceId();
  ASSERT_TRUE(world.sees("qrsk-med/3.0/SendSessionData/"));
  VerdictInbox inbox;
  manager.getRiskForCheckPoint(Launch(), inbox.completion());
  const auto verdicts = inbox.wait(1);
  ASSERT_EQ(verdicts.size(), 1U);
  EXPECT_NE(verdicts[0].level, RiskLevel::undefined);
  EXPECT_NE(verdicts[0].signedRisk, "-1");
  manager.updateCheckPointStatus(CheckPointType::TRANSACTION, verdicts[0].requestId,
                                 CheckPointStatus::APPROVED, "T-1");
  ASSERT_TRUE(world.sees("qrsk-med/3.0//UpdateTransactionResult/"));
  manager.arriveToCheckPoint(General());
  ASSERT_TRUE(world.sees("qrsk-med/3.0/SendCheckpointEvent/"));
  manager.logout();
  ASSERT_TRUE(world.sees("qrsk-med/3.0/SendSessionData/", 2));
  EXPECT_EQ(world.server.tally().refused, 0U);
  std::vector<std::string> paths;
  for (const auto& exchange : world.server.exchanges()) {
    EXPECT_EQ(exchange.fault, "") << exchange.request;
    paths.push_back(exchange.path);
  }
  EXPECT_THAT(paths,
              ElementsAre("/qrsk-med/3.0/getSdkConfiguration/", "/qrsk-med/3.0//GetDeviceID/",
                          "/qrsk-med/3.0/SendSessionData/", "/qrsk-med/3.0/GetCheckpointRisk/",
                          "/qrsk-med/3.0//UpdateTransactionResult/",
                          "/qrsk-med/3.0/SendCheckpointEvent/", "/qrsk-med/3.0/SendSessionData/"));
}

TEST(FirstVerdictTest, EveryCheckpointFitsTheServersContract) {
  RealWorld world;
  QuorvanceManager manager(world.platform());
  manager.setupWithServerUrl(world.server.url(), "anna");
  const auto user = std::make_shared<User>(User{.userId = "ånna/1", .email = "a@bank.test"});
  const auto address = std::make_shared<Address>(Address{.city = "Graz"});
  Json extra = Json::object();
  extra["screen"] = "start";
  std::vector<std::unique_ptr<CheckPoint>> checkPoints;
  checkPoints.push_back(std::make_unique<Launch>());
  checkPoints.push_back(std::make_unique<Register>(user));
  checkPoints.push_back(std::make_unique<Login>(user));
  checkPoints.push_back(std::make_unique<UpdateUserInfo>(nullptr));
  checkPoints.push_back(std::make_unique<PasswordChange>(user));
  checkPoints.push_back(std::make_unique<General>());
  checkPoints.push_back(std::make_unique<AddPaymentMethod>("anna", "token"));
  checkPoints.push_back(
      std::make_unique<Transaction>(TransactionFields{.actType = TransactionType::P2P,
                                                      .curType = CurrencyCode::EUR,
                                                      .amount = 12.5,
                                                      .user = user,
                                                      .shippingAddress = address}));
  checkPoints.push_back(std::make_unique<CheckPoint>(CheckPointType::UPDATE_DETAILS));
  VerdictInbox inbox;
  for (const auto& checkPoint : checkPoints) {
    checkPoint->setAdditionalData(extra);
    manager.getRiskForCheckPoint(*checkPoint, inbox.completion());
    manager.arriveToCheckPoint(*checkPoint);
  }
  EXPECT_EQ(inbox.wait(checkPoints.size()).size(), checkPoints.size());
  EXPECT_TRUE(world.sees("qrsk-med/3.0/SendCheckpointEvent/", checkPoints.size()));
  for (const auto& exchange : world.server.exchanges()) {
    EXPECT_EQ(exchange.fault, "") << exchange.request;
  }
}

TEST(FirstVerdictTest, StoredStateSurvivesTheProcess) {
  RealWorld world;
  std::string session;
  {
    const Platform before = world.platform();
    QuorvanceManager manager(before);
    manager.setupWithServerUrl(world.server.url(), "anna");
    manager.initializeDeviceId();
    ASSERT_TRUE(world.sees("qrsk-med/3.0/SendSessionData/"));
    session = manager.getSessionId().value_or("");
    std::promise<void> written;
    before.backgroundQueue->post(WorkLane::files, [&] { written.set_value(); });
    ASSERT_EQ(written.get_future().wait_for(kTestPatience), std::future_status::ready);
  }
  const Platform platform = world.platform();
  const StoredEntry device = platform.defaults->read("deviceId");
  EXPECT_EQ(device.kind, StoredEntry::Kind::text);
  EXPECT_NE(device.text, "no_device_id");
  QuorvanceManager next(platform);
  EXPECT_EQ(next.getDeviceId(), device.text);
  EXPECT_NE(next.getSessionId(), session);
}

TEST(FirstVerdictTest, HostsOwnLoopRunsTheMainQueue) {
  RealWorld world;
  const auto loop = std::make_shared<HostLoopQueue>();
  ASSERT_GE(loop->descriptor(), 0);
  QuorvanceManager manager(world.platform(loop));
  manager.setupWithServerUrl(world.server.url(), "anna");
  // The first request needs no turn of the host's loop.
  EXPECT_TRUE(world.sees("qrsk-med/3.0/getSdkConfiguration/"));
  loop->dispatch();
}

}  // namespace
}  // namespace quorvance
