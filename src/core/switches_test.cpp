#include <gmock/gmock.h>

#include <stdexcept>

#include "base/collection.h"
#include "base/json_test_support.h"
#include "core/manager_world_test_support.h"
#include "platform/testing/fake_motion.h"
#include "platform/testing/fake_view.h"
#include "quorvance/account_check_points.h"
#include "quorvance/quorvance_manager.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

/// Withdraws the host's consent; gives it again at its end, which is the default.
struct NoCollection {
  NoCollection() { QuorvanceManager::setCollectionEnabled(false); }
  ~NoCollection() { QuorvanceManager::setCollectionEnabled(true); }
  NoCollection(const NoCollection&) = delete;
  NoCollection& operator=(const NoCollection&) = delete;
};

class CountingSystemFacts : public FactSource<SystemFacts> {
 public:
  int reads = 0;
  SystemFacts read() override {
    ++reads;
    return {};
  }
};

/// Level, signature, request identifier.
using Verdict = std::vector<std::string>;

RiskCompletion keepVerdict(std::vector<Verdict>& verdicts) {
  return [&verdicts](Risk risk, const std::string& signedRisk, const std::string& requestId) {
    verdicts.push_back({risk.stringValue(), signedRisk, requestId});
  };
}

struct SwitchesWorld : TestWorld {
  std::shared_ptr<CountingSystemFacts> countedSystem = std::make_shared<CountingSystemFacts>();
  std::shared_ptr<FakeMotion> motion = std::make_shared<FakeMotion>(time);
  BeforeSend beforeSend;

  Platform platform() const {
    Platform platform = TestWorld::platform();
    platform.facts.system = countedSystem;
    platform.motion = motion;
    platform.beforeSend = beforeSend;
    return platform;
  }
  std::vector<std::string> pathsSent() const {
    std::vector<std::string> paths;
    for (const SentRequest& sent : http->sent()) {
      const std::string& url = sent.request.url;
      paths.push_back(url.substr(url.rfind('/', url.size() - 2) + 1));
    }
    return paths;
  }
};

void useEverything(QuorvanceManager& manager, std::vector<Verdict>& verdicts) {
  manager.setupWithServerUrl(ManagerWorld::kServer, "u1");
  manager.initializeDeviceId();
  manager.sendDataWithNewSession();
  manager.sendingTracingData();
  manager.setPendingUserData(parsedJson(R"({"contacts":1})"));
  manager.onRequestAccessWithTypeMobilePermission(MobilePermission::CAMERA);
  EXPECT_FALSE(manager.ifAuthorizedWithTypeMobilePermission(MobilePermission::CAMERA));
  manager.checkSensorForEmulator();
  const auto screen = manager.startNewScreenListener(ScreenListenerType::LOGIN_FORM, 1,
                                                     std::make_shared<FakeView>(ViewFrame{}));
  screen->resumeListen();
  manager.arriveToCheckPoint(Launch());
  manager.getRiskForCheckPoint(Launch(), keepVerdict(verdicts));
  EXPECT_THAT(verdicts, IsEmpty());
  manager.updateCheckPointStatus(CheckPointType::TRANSACTION, "r", CheckPointStatus::APPROVED,
                                 std::nullopt);
  screen->finishScreenListener();
  manager.crashEyeDidCatchCrash(CrashModel{});
  manager.logout();
}

TEST(CollectionTest, WhileItIsOffNothingIsReadStoredOrSentAndVerdictsComeAtOnce) {
  SwitchesWorld world;
  world.authorization->answers[AuthorizationSubject::camera] = AuthorizationStatus::authorized;
  const NoCollection off;
  QuorvanceManager manager(world.platform());
  std::vector<Verdict> verdicts;
  useEverything(manager, verdicts);
  world.time->run();
  EXPECT_THAT(verdicts, ElementsAre(ElementsAre("undefined", "-1", "")));
  world.time->advance(65s);
  EXPECT_THAT(world.pathsSent(), IsEmpty());
  EXPECT_THAT(world.documents->files, IsEmpty());
  EXPECT_EQ(world.documents->reads, 0);
  EXPECT_EQ(world.countedSystem->reads, 0);
  EXPECT_EQ(world.authorization->questions, 0);
  EXPECT_EQ(world.reachability->listeners(), 0U);
  EXPECT_FALSE(world.motion->isRunning(MotionSensor::accelerometer));
}

TEST(CollectionTest, SwitchedOnAgainItGoesOnWithWhatIsStillNeededUnderWhoHasSignedInMeanwhile) {
  SwitchesWorld world;
  world.http->answer(ManagerWorld::kDevicePath, okReply(R"({"deviceID":"d1"})"));
  world.http->answer(ManagerWorld::kSessionPath, okReply(R"({"response":"OK"})"));
  QuorvanceManager manager(world.platform());
  std::vector<Verdict> verdicts;
  {
    const NoCollection off;
    manager.setupWithServerUrl(ManagerWorld::kServer, "u1");
    manager.initializeDeviceId();
    manager.getRiskForCheckPoint(Login(std::make_shared<User>(User{.userId = "u2"})),
                                 keepVerdict(verdicts));
    world.time->advance(25s);
    EXPECT_THAT(world.pathsSent(), IsEmpty());
  }
  world.time->advance(10s);
  EXPECT_THAT(world.pathsSent(), testing::UnorderedElementsAre("getSdkConfiguration/",
                                                               "GetDeviceID/", "SendSessionData/"));
  EXPECT_EQ(manager.getDeviceId(), "d1");
  for (const SentRequest& sent : world.http->sent()) {
    EXPECT_EQ(*findText(sent.body["keys"], "user_id"), "u2");
  }
  // The network, which is watched by now, is left with its next change and watched anew.
  {
    const NoCollection off;
    world.reachability->change(NetworkKind::wlan);
    world.time->run();
  }
  manager.sendDataWithNewSession();
  world.time->advance(3s);
  EXPECT_EQ(world.reachability->listeners(), 2U);
}

TEST(CollectionTest, CallsOnTheirWayEndAndTheirFailuresAreNotKept) {
  SwitchesWorld world;
  QuorvanceManager manager(world.platform());
  manager.setupWithServerUrl(ManagerWorld::kServer, "u1");
  world.time->advance(3s);
  std::vector<Verdict> verdicts;
  const std::unique_ptr<NoCollection> off = [&] {
    world.http->answer(ManagerWorld::kRiskPath, [&](const SentRequest&) {
      QuorvanceManager::setCollectionEnabled(false);
      return okReply(R"({"risk":3,"signedRisk":"s","requestID":"r"})");
    });
    manager.getRiskForCheckPoint(Launch(), keepVerdict(verdicts));
    world.time->run();
    return std::make_unique<NoCollection>();
  }();
  EXPECT_THAT(verdicts, ElementsAre(ElementsAre("VERY_HIGH", "s", "r")));
  QuorvanceManager::setCollectionEnabled(true);
  world.http->answer(ManagerWorld::kEventPath, [&](const SentRequest&) {
    QuorvanceManager::setCollectionEnabled(false);
    return refusedReply();
  });
  manager.arriveToCheckPoint(Launch());
  world.time->run();
  EXPECT_THAT(world.documents->files, IsEmpty());
}

TEST(CollectionTest, AScreenUnderWayStopsItsSensorsAndRecordsNothing) {
  SwitchesWorld world;
  QuorvanceManager manager(world.platform());
  const auto view = std::make_shared<FakeView>(ViewFrame{});
  const auto screen = manager.startNewScreenListener(ScreenListenerType::LOGIN_FORM, 1, view);
  screen->resumeListen();
  EXPECT_TRUE(world.motion->isRunning(MotionSensor::accelerometer));
  const NoCollection off;
  world.motion->deliver(MotionSensor::accelerometer, MotionSample{1, 2, 3});
  world.time->run();
  EXPECT_FALSE(world.motion->isRunning(MotionSensor::accelerometer));
  QuorvanceGestureRecognizer recognizer([](const auto& /*recognizer*/) {});
  screen->handleTouches(recognizer);
  QuorvanceManager::setCollectionEnabled(true);
  screen->finishScreenListener();
  world.time->run();
  EXPECT_EQ(world.http->countTo("BiometricData/"), 0U);  // there is not a row
}

TEST(ErasureTest, MemoryForgetsAtOnceAndTheDiskBeforeTheCompletion) {
  SwitchesWorld world;
  world.http->answer(ManagerWorld::kDevicePath, okReply(R"({"deviceID":"d1"})"));
  world.http->answer(ManagerWorld::kConfigurationPath, okReply(R"({"activity_map": true})"));
  QuorvanceManager manager(world.platform());
  manager.setupWithServerUrl(ManagerWorld::kServer, "u1");
  manager.initializeDeviceId();
  world.time->advance(3s);
  world.documents->files = {{"crash1.json", "{}"},
                            {"activity1.json", "{}"},
                            {"unreadable-bio1.json", "?"},
                            {"of-somebody-else", "x"}};
  manager.setPendingUserData(parsedJson(R"({"contacts":1})"));
  manager.onRequestAccessWithTypeMobilePermission(MobilePermission::CAMERA);
  const auto session = manager.getSessionId();
  const auto screen = manager.startNewScreenListener(ScreenListenerType::LOGIN_FORM, 1, nullptr);

  std::vector<bool> completions;
  manager.eraseStoredData([&](bool isAllGone) { completions.push_back(isAllGone); });
  EXPECT_THAT(completions, IsEmpty());
  EXPECT_THAT(world.store->entries(), IsEmpty());
  EXPECT_EQ(manager.userId(), std::nullopt);
  EXPECT_EQ(manager.getDeviceId(), "no_device_id");
  EXPECT_NE(manager.getSessionId(), session);
  EXPECT_EQ(world.face->resets, 1);
  world.time->run();
  EXPECT_THAT(completions, ElementsAre(true));
  EXPECT_THAT(world.documents->files, ElementsAre(Pair("of-somebody-else", "x")));

  screen->finishScreenListener();
  world.time->run();
  EXPECT_EQ(world.documents->count("activity"), 0U);
  std::vector<Verdict> verdicts;
  manager.getRiskForCheckPoint(Launch(), keepVerdict(verdicts));
  world.time->run();
  const SentRequest risk = world.http->sentTo(ManagerWorld::kRiskPath).at(0);
  EXPECT_EQ(*findText(risk.body["keys"], "user_id"), "UNKNOWN");
  EXPECT_EQ(*findText(risk.body["keys"], "device_id"), "no_device_id");
  EXPECT_FALSE(risk.body.contains("user_data"));
  EXPECT_EQ(risk.body["checkpoint_additional_data"]["askedPermissions"], Json::array());
}

TEST(ErasureTest, AnIdentifierThatWasAskedForBeforeIsNotTakenAfter) {
  SwitchesWorld world;
  QuorvanceManager manager(world.platform());
  manager.setupWithServerUrl(ManagerWorld::kServer, "u1");
  world.http->answer(ManagerWorld::kDevicePath, [&](const SentRequest&) {
    manager.eraseStoredData();
    return okReply(R"({"deviceID":"before"})");
  });
  manager.initializeDeviceId();
  world.time->run();
  EXPECT_EQ(manager.getDeviceId(), "no_device_id");
  world.http->answer(ManagerWorld::kDevicePath, okReply(R"({"deviceID":"after"})"));
  world.time->advance(10s);
  EXPECT_EQ(manager.getDeviceId(), "after");
}

TEST(ErasureTest, WhatCannotBeRemovedIsTold) {
  SwitchesWorld world;
  QuorvanceManager manager(world.platform());
  world.documents->files = {{"crash1.json", "{}"}};
  world.documents->removeError = PlatformError{"disk", 5, "no", std::nullopt};
  std::vector<bool> completions;
  manager.eraseStoredData([&](bool isAllGone) { completions.push_back(isAllGone); });
  world.time->run();
  EXPECT_THAT(completions, ElementsAre(false));
}

TEST(BeforeSendTest, SeesEveryBodyInOrderWithoutItsVersionAndChangesIt) {
  SwitchesWorld world;
  std::vector<std::string> services;
  world.documents->files["crash1.json"] = R"({"errorStack":"s"})";
  world.http->answer(ManagerWorld::kDevicePath, okReply(R"({"deviceID":"d1"})"));
  world.beforeSend = [&](std::string_view service, const std::string& body) {
    services.emplace_back(service);
    Json json = parsedJson(body);
    EXPECT_FALSE(json.contains("version"));
    EXPECT_TRUE(json.contains("keys"));
    json["keys"]["user_id"] = "-";
    return std::optional(json.dump());
  };
  QuorvanceManager manager(world.platform());
  manager.setupWithServerUrl(ManagerWorld::kServer, "u1");
  manager.initializeDeviceId();
  world.time->advance(3s);
  EXPECT_THAT(services, testing::UnorderedElementsAre("getSdkConfiguration", "GetDeviceID",
                                                      "CrashLogging", "SendSessionData"));
  std::vector<std::string> sent = world.pathsSent();
  for (std::string& path : sent) path.pop_back();
  EXPECT_EQ(sent, services);
  for (const SentRequest& request : world.http->sent()) {
    EXPECT_EQ(*findText(request.body["keys"], "user_id"), "-");
    EXPECT_TRUE(request.body.contains("version"));
  }
}

TEST(BeforeSendTest, ADroppedCallIsCountedItsVerdictAnswerlessItsReportKept) {
  const BeforeSend hooks[] = {
      [](auto, const auto&) -> std::optional<std::string> { throw std::runtime_error("no"); },
      [](auto, const auto&) -> std::optional<std::string> { throw 7; },
      [](auto, const auto&) { return std::nullopt; },
      [](auto, const auto&) { return std::optional<std::string>("[]"); },
      [](auto, const auto& body) { return std::optional<std::string>(body + "}"); },
  };
  for (const BeforeSend& hook : hooks) {
    SwitchesWorld world;
    world.beforeSend = hook;
    const auto context = std::make_shared<Context>(world.platform());
    const auto manager = ManagerCore::make(context);
    world.documents->files["activity1.json"] = "{}";
    std::vector<Verdict> verdicts;
    manager->getRiskForCheckPoint(Launch(), keepVerdict(verdicts));
    world.time->run();
    ASSERT_EQ(verdicts.size(), 1U);
    EXPECT_EQ(verdicts[0][0], "undefined");
    EXPECT_EQ(verdicts[0][1], "-1");
    EXPECT_THAT(world.pathsSent(), IsEmpty());
    // The verdict's and the report's, whose upload begins all the same.
    EXPECT_EQ(context->redaction->dropped(), 2U);
    EXPECT_EQ(world.documents->count("activity"), 1U);
  }
}

}  // namespace
}  // namespace quorvance
