#include <gmock/gmock.h>

#include <limits>

#include "base/json_test_support.h"
#include "base/milliseconds.h"
#include "core/manager_world_test_support.h"
#include "platform/testing/fake_motion.h"
#include "quorvance/account_check_points.h"
#include "state/class_flags.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

TEST(EvidenceTest, FirstListenerWithTheActivityMapOnIsAnnouncedThenTellsTheStart) {
  ManagerWorld world;
  world.setup();
  world.time->run();
  const auto start = [&](std::int64_t actionId) {
    EXPECT_NE(world.manager->startNewScreenListener(ScreenListenerType::GENERAL, actionId, nullptr),
              nullptr);
    world.time->run();
  };
  start(1);
  EXPECT_EQ(world.documents->count("activity"), 0U);
  std::optional<std::size_t> recordsAtEnrichment;
  world.http->answer(ManagerWorld::kEnrichmentPath, [&](const SentRequest&) {
    recordsAtEnrichment = world.documents->count("activity");
    return okReply("{}");
  });
  world.configure(R"({"activity_map": true,
                      "screen_listeners_list": [{"screenListenerType": "GENERAL", "screenId": 1},
                                                {"screenListenerType": "GENERAL"}]})");
  world.time->advance(3s);
  start(1);
  start(2);
  EXPECT_EQ(recordsAtEnrichment, 0U);
  ASSERT_EQ(world.documents->count("activity"), 1U);
  EXPECT_EQ(textOf(*parseJson(world.documents->files.begin()->second)),
            R"({"appID":"com.bank.app","appVer":"4.2","deviceId":"no_device_id","userId":"u1",)"
            R"("sessionId":")" +
                *world.manager->getSessionId() +
                R"(","screenType":"startApp","timestampStart":1700000000000,)"
                R"("timestampEnd":1700000003000})");
  const auto enriched = world.http->sentTo(ManagerWorld::kEnrichmentPath);
  ASSERT_EQ(enriched.size(), 1U);
  EXPECT_EQ(enriched[0].body.size(), 3U);
}

TEST(EvidenceTest, ListenerBeginsOnceItsTraceEntryHasEndedAndEndsUnderTheIdentityOfNow) {
  ManagerWorld world([](Platform& platform) { platform.clock = std::make_shared<TickingClock>(); });
  world.configure(
      R"({"app_run_mode": "DEVELOPMENT", "tracing_manager": {"level_qv_manager": true}})");
  world.context->tracing->clear();
  const auto listener =
      world.manager->startNewScreenListener(ScreenListenerType::GENERAL, 1, nullptr);
  EXPECT_THAT(world.traces(),
              ElementsAre("startNewScreenListener Start", "startNewScreenListener End"));
  world.time->run();
  world.manager->identity().configureServerUrl("http://next.test/");
  world.manager->logout();
  EXPECT_EQ(world.manager->userId(), std::nullopt);
  listener->finishScreenListener();
  world.manager->sendImage(makeObject(1), {});
  world.time->run();
  const auto events = world.http->sentTo("qrsk-med/3.0/sendScreenListenerEvent/");
  ASSERT_EQ(events.size(), 2U);
  EXPECT_GT(dateText(*findInteger(events[0].body["screenListenerEvent"], "timestamp")),
            *findText(world.context->tracing->entries()[1], "date"));
  EXPECT_TRUE(events[1].request.url.starts_with("http://next.test/"));
  EXPECT_EQ(*findText(events[1].body["keys"], "user_id"), "UNKNOWN");
  const auto images = world.http->sentTo("qrsk-med/3.0/SendBiometricImage/");
  ASSERT_EQ(images.size(), 1U);
  EXPECT_TRUE(images[0].request.url.starts_with("http://next.test/"));
  EXPECT_THAT(keysOf(images[0].body), ElementsAre("version"));
}

TEST(EvidenceTest, EmulatorCheckSamplesForHalfASecondAndKeepsWhetherARowCame) {
  for (const bool moves : {true, false}) {
    std::shared_ptr<FakeMotion> motion;
    ManagerWorld world([&](Platform& platform) {
      platform.motion = motion = std::make_shared<FakeMotion>(platform.mainQueue);
    });
    const DeviceDataManager& device = *world.context->deviceData;
    world.manager->checkSensorForEmulator();
    world.time->advance(499ms);
    EXPECT_FALSE(motion->isRunning(MotionSensor::accelerometer));
    world.time->advance(1ms);
    EXPECT_TRUE(motion->isRunning(MotionSensor::accelerometer));
    EXPECT_TRUE(device.sensorCheck().isListening);
    if (moves) motion->deliver(MotionSensor::accelerometer, MotionSample{0, 0, -1});
    world.time->advance(499ms);
    EXPECT_EQ(device.sensorCheck().hasSensorsData, std::nullopt);
    world.time->advance(1ms);
    EXPECT_EQ(device.sensorCheck().hasSensorsData, moves);
    EXPECT_FALSE(device.sensorCheck().isListening);
    EXPECT_FALSE(motion->isRunning(MotionSensor::accelerometer));
    EXPECT_EQ(world.http->sent().size(), 0U);
  }
}

TEST(EvidenceTest, DebugLinesTellTheAnswersAndTheTraces) {
  ManagerWorld world;
  const DebugLines debug;
  const auto answer = [&](const char* path, const char* name) {
    world.http->answer(path, okReply(std::string(R"({"response":")") + name + R"("})"));
  };
  answer(ManagerWorld::kEventPath, "arrived");
  answer(ManagerWorld::kSessionPath, "OK");
  answer(ManagerWorld::kEnrichmentPath, "enriched");
  world.http->answer(ManagerWorld::kResultPath, statusReply(500));
  world.configure(R"({"tracing_manager": {"level_qv_manager": true},
                      "screen_listeners_list": [{"screenListenerType": "GENERAL", "screenId": 1}]})");
  world.manager->arriveToCheckPoint(Launch());
  world.manager->sendDataWithNewSession();
  world.manager->startNewScreenListener(ScreenListenerType::GENERAL, 1, nullptr);
  world.manager->updateCheckPointStatus(CheckPointType::LOGIN, "r", CheckPointStatus::DENIED, {});
  world.time->run();
  for (const char* line : {"4.2", "QuorvanceManager: time to init device data manager: 0.0",
                           "length dataLogging: Optional(0)", "length dataLogging: Optional(5)",
                           R"(QuorvanceManager response: {"response":"arrived"})",
                           R"(QuorvanceManager response: {"response":"OK"})",
                           R"(QuorvanceManager response: {"response":"enriched"})",
                           "updateTransactionStatus: false"}) {
    EXPECT_THAT(debug.lines(), testing::Contains(line));
  }
}

TEST(EvidenceTest, PermissionIsAnsweredAsItStandsNow) {
  ManagerWorld world;
  auto& answers = world.authorization->answers;
  answers[AuthorizationSubject::camera] = AuthorizationStatus::authorized;
  answers[AuthorizationSubject::location] = AuthorizationStatus::authorizedWhenInUse;
  EXPECT_TRUE(world.manager->ifAuthorized(MobilePermission::CAMERA));
  EXPECT_TRUE(world.manager->ifAuthorized(MobilePermission::AUTHORIZED_WHEN_IN_USE));
  EXPECT_FALSE(world.manager->ifAuthorized(MobilePermission::AUTHORIZED_ALWAYS));
  EXPECT_FALSE(world.manager->ifAuthorized(static_cast<MobilePermission>(7)));
  answers.clear();
  EXPECT_FALSE(world.manager->ifAuthorized(MobilePermission::CAMERA));
}

TEST(EvidenceTest, PendingUserDataGoesOutWithTheNextPayloadOnce) {
  ManagerWorld world;
  world.setup();
  const auto sent = [&](const CheckPoint& checkPoint) {
    world.manager->arriveToCheckPoint(checkPoint);
    world.time->run();
    const Json body = world.http->sentTo(ManagerWorld::kEventPath).back().body;
    return body.contains("user_data") ? textOf(body["user_data"]) : "none";
  };
  const Json contacts = parsedJson(R"({"contacts":2})");
  EXPECT_EQ(sent(Launch()), "none");
  world.manager->setPendingUserData(parsedJson(R"({"contacts":1})"));
  world.manager->setPendingUserData(contacts);
  EXPECT_EQ(sent(CheckPoint(CheckPointType::UPDATE_DETAILS)), "none");
  EXPECT_EQ(sent(Launch()), R"({"contacts":2})");
  EXPECT_EQ(sent(Launch()), "none");
  world.manager->setPendingUserData(contacts);
  world.manager->setPendingUserData(nullptr);
  EXPECT_EQ(sent(Launch()), "none");
  world.manager->setPendingUserData(contacts);
  world.manager->sendDataWithNewSession();
  world.time->run();
  EXPECT_EQ(sent(Launch()), "none") << "a session collects its own and drops it";
}

// Its payload is made later, which must neither hand the data of whoever has gone to the next
// checkpoint nor take the data of whoever has come.
TEST(EvidenceTest, ASessionDropsWhatWasPendingWhenItWasAskedFor) {
  ManagerWorld world;
  world.setup();
  world.manager->setPendingUserData(parsedJson(R"({"contacts":1})"));
  setSessionDataCollect(true);
  world.manager->logout();
  EXPECT_FALSE(sessionDataCollect());
  world.manager->arriveToCheckPoint(Launch());
  world.manager->setPendingUserData(parsedJson(R"({"contacts":2})"));
  setSessionDataCollect(true);
  world.time->run();
  EXPECT_TRUE(sessionDataCollect());
  world.manager->arriveToCheckPoint(Launch());
  world.time->run();
  const auto events = world.http->sentTo(ManagerWorld::kEventPath);
  ASSERT_EQ(events.size(), 2U);
  EXPECT_FALSE(events[0].body.contains("user_data"));
  EXPECT_EQ(textOf(events[1].body["user_data"]), R"({"contacts":2})");
}

TEST(EvidenceTest, UserDataThatCannotBeSentIsIgnored) {
  ManagerWorld world;
  world.setup();
  // The body around it is a level as well.
  const Json deepest = nestedObjects(kMaxJsonDepth - 1);
  const Json deep = nestedObjects(kMaxJsonDepth);
  Json endless = Json::object();
  endless["a"] = std::numeric_limits<double>::infinity();
  for (const Json& odd : {deep, endless, Json(7), Json("text"), Json::array()}) {
    world.manager->setPendingUserData(odd);
    world.manager->arriveToCheckPoint(Launch());
    world.time->run();
    EXPECT_FALSE(world.http->sentTo(ManagerWorld::kEventPath).back().body.contains("user_data"));
  }
  EXPECT_EQ(world.http->countTo(ManagerWorld::kEventPath), 5U);
  world.manager->setPendingUserData(deepest);
  world.manager->arriveToCheckPoint(Launch());
  world.time->run();
  EXPECT_TRUE(world.http->sentTo(ManagerWorld::kEventPath).back().body.contains("user_data"));
}

// Nothing runs after the call: the report is stored when it returns.
TEST(EvidenceTest, CrashIsKeptAtOnceUnderItsSignalsNumber) {
  ManagerWorld world;
  const auto storedOf = [&](const CrashModel& crash) {
    world.documents->files.clear();
    world.manager->crashEyeDidCatchCrash(crash);
    return world.documents->files.empty() ? Json()
                                          : *parseJson(world.documents->files.begin()->second);
  };
  CrashModel crash{CrashModelType::signal,
                   "SIGBUS",
                   "Signal SIGBUS(10) was raised.\n",
                   "1.0.0",
                   "12",
                   "m",
                   "frame"};
  EXPECT_EQ(textOf(storedOf(crash)),
            R"({"error_stack":"frame","version":"12","device_model":"m","sdk_version":"1.0.0",)"
            R"("cause":"Signal SIGBUS(10) was raised.\n","error_type":"SIGBUS","error_code":10,)"
            R"("error_timestamp":1700000000000})");
  crash.name = "OTHER";
  EXPECT_EQ(findMember(storedOf(crash), "error_code"), nullptr);
  crash.type = CrashModelType::exception;
  crash.name = "SIGBUS";
  EXPECT_EQ(findMember(storedOf(crash), "error_code"), nullptr);
  crash.isStored = true;
  EXPECT_TRUE(storedOf(crash).is_null()) << "the trap has dealt with it";
}

}  // namespace
}  // namespace quorvance
