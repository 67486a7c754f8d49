#include <gmock/gmock.h>

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
  const TransactionFields transaction{.actType = TransactionType::P2P,
                                      .curType = CurrencyCode::EUR,
                                      .amount = 12.5,
                                      .user = user,
                                      .shippingAddress = std::make_shared<Address>()};
  const std::shared_ptr<CheckPoint> checkPoints[] = {
      std::make_shared<Launch>(),
      std::make_shared<Register>(user),
      std::make_shared<Login>(user),
      std::make_shared<UpdateUserInfo>(nullptr),
      std::make_shared<PasswordChange>(user),
      std::make_shared<General>(),
      std::make_shared<AddPaymentMethod>("anna", "token"),
      std::make_shared<Transaction>(transaction),
      std::make_shared<CheckPoint>(CheckPointType::UPDATE_DETAILS)};
  VerdictInbox inbox;
  for (const auto& checkPoint : checkPoints) {
    checkPoint->setAdditionalData({{"screen", "start"}});
    manager.getRiskForCheckPoint(*checkPoint, inbox.completion());
    manager.arriveToCheckPoint(*checkPoint);
  }
  EXPECT_EQ(inbox.wait(std::size(checkPoints)).size(), std::size(checkPoints));
  EXPECT_TRUE(world.sees("qrsk-med/3.0/SendCheckpointEvent/", std::size(checkPoints)));
  for (const auto& exchange : world.server.exchanges()) {
    EXPECT_EQ(exchange.fault, "") << exchange.request;
  }
}

}  // namespace
}  // namespace quorvance
