#include <gmock/gmock.h>

#include "core/manager_world_test_support.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;

std::vector<std::int64_t> secondsOfCalls(const ManagerWorld& world, std::string_view path,
                                         std::int64_t start) {
  std::vector<std::int64_t> seconds;
  for (const SentRequest& sent : world.http->sentTo(path)) {
    seconds.push_back((sent.sentAt - start) / 1000);
  }
  return seconds;
}

TEST(StartupTest, EmptyUrlIsRefusedAndChangesNothing) {
  ManagerWorld world;
  world.configure(ManagerWorld::kTraceManager);
  world.context->tracing->clear();
  const auto stored = world.store->writes();
  PlatformError error;
  EXPECT_FALSE(world.manager->setup("", "someone", &error));
  EXPECT_EQ(error.description, "serverUrl can't be empty");
  world.time->run();
  EXPECT_EQ(world.store->writes(), stored);
  EXPECT_EQ(world.manager->identity().userId(), "u1");
  EXPECT_EQ(world.http->countTo(ManagerWorld::kConfigurationPath), 1U);
  EXPECT_THAT(world.traces(), ElementsAre("setup Start"));
}

TEST(StartupTest, SetupStoresFetchesAndLeavesTheRestToTheHost) {
  ManagerWorld world;
  world.put({"activity1.json", "communicationError1.json", "crash1.json"});
  const int asked = world.identity->asked;
  EXPECT_TRUE(world.setup());
  EXPECT_EQ(world.identity->asked, asked);  // it may have to be read from the disk
  world.time->run();
  EXPECT_EQ(world.store->read("serverUrl").text, "http://risk.test/");
  EXPECT_EQ(world.store->read("user_id").text, "u1");
  ASSERT_EQ(world.http->sent().size(), 1U);
  const SentRequest sent = world.http->sent()[0];
  EXPECT_EQ(sent.request.url, "http://risk.test/qrsk-med/3.0/getSdkConfiguration/");
  EXPECT_EQ(textOf(sent.body["iosVersion"]), R"("12")");
  EXPECT_EQ(textOf(sent.body["model"]), R"("Model-1")");
  EXPECT_EQ(textOf(sent.body["kindModel"]), R"("handset")");
  EXPECT_EQ(sent.body.size(), 6U);  // with "keys", "session" and "version"
  EXPECT_EQ(world.documents->reads, 0);
}

TEST(StartupTest, AbsentUserKeepsTheStoredOneAndIsTracedAsNil) {
  ManagerWorld world;
  world.configure(ManagerWorld::kTraceManager);
  world.context->tracing->clear();
  EXPECT_TRUE(world.setup(std::nullopt));
  EXPECT_EQ(world.store->read("user_id").text, "u1");
  EXPECT_EQ(textOf(world.context->tracing->entries()[0]["paramList"]),
            R"(["http://risk.test/","nil"])");
}

TEST(StartupTest, ConfigurationIsAskedForAgainUntilOneHasCome) {
  ManagerWorld world;
  const std::int64_t start = world.time->nowMilliseconds();
  world.http->answerOnce(ManagerWorld::kConfigurationPath, refusedReply());
  world.http->answerOnce(ManagerWorld::kConfigurationPath, okReply("[]"));
  world.setup();
  world.time->advance(10min);
  EXPECT_THAT(secondsOfCalls(world, ManagerWorld::kConfigurationPath, start),
              ElementsAre(0, 10, 20));
  // From now on only a setup asks.
  world.manager->getSdkConfigurationThread();
  world.time->advance(10min);
  EXPECT_EQ(world.http->countTo(ManagerWorld::kConfigurationPath), 3U);
  world.http->answerOnce(ManagerWorld::kConfigurationPath, refusedReply());
  world.setup();
  world.time->advance(10min);
  EXPECT_EQ(world.http->countTo(ManagerWorld::kConfigurationPath), 4U);
}

/// Notes how much was put off when the trap was set.
struct WatchingTrap : FakeCrashTrap {
  std::shared_ptr<ManualExecutor> time;
  std::uint64_t delayedPosts = 0;

  void install(CrashPlan plan) override {
    delayedPosts = time->delayedPosts();
    FakeCrashTrap::install(std::move(plan));
  }
};

TEST(StartupTest, ConfigurationInstallsTheCatcherThenStartsTheTraceLoopAndIsReplacedWhole) {
  const auto trap = std::make_shared<WatchingTrap>();
  ManagerWorld world([&](Platform& seam) { seam.crashTrap = trap; });
  trap->time = world.time;
  world.configure(R"({"enable_crash_eye": true, "timeout_connection": 30,
                      "tracing_manager": {"level_exception": true}})");
  EXPECT_EQ(trap->plans.size(), 1U);
  EXPECT_EQ(world.time->delayedPosts(), trap->delayedPosts + 1);
  world.http->answer(ManagerWorld::kConfigurationPath, okReply("{}"));
  world.setup();
  world.time->run();
  EXPECT_EQ(trap->plans.size(), 1U);
  EXPECT_EQ(world.context->state->sdkConfig()->timeoutConnection, 5);
}

TEST(StartupTest, ReplyIsAppendedAfterTheEntryWasClosed) {
  ManagerWorld world;
  world.configure(ManagerWorld::kTraceManager);
  world.context->tracing->clear();
  world.setup();
  world.time->run();
  EXPECT_THAT(
      world.traces(),
      ElementsAre("setup Start", "configure(serverUrl:) Start", "configure(serverUrl:) End",
                  "configure(userId:) Start", "configure(userId:) End", "getSdkConfiguration Start",
                  "getSdkConfiguration End", "setup End", "getSdkConfiguration Middle",
                  "saveSdkConfiguration Start", "saveSdkConfiguration End"));
  const Json entries = world.context->tracing->entries();
  EXPECT_EQ(textOf(entries[8]["paramList"]),
            R"(["response: {\"tracing_manager\":{\"level_qv_manager\":true}}"])");
}

TEST(StartupTest, TimeoutIsFiveSecondsUntilAConfigurationSaysOtherwise) {
  ManagerWorld world;
  world.configure(R"({"timeout_connection": 30})");
  world.setup();
  world.time->run();
  EXPECT_EQ(world.http->sent()[0].request.timeout, 5s);
  EXPECT_EQ(world.http->sent()[1].request.timeout, 30s);
  world.context->state->replaceSdkConfig({.timeoutConnection = std::nullopt});
  world.setup();
  world.time->run();
  EXPECT_EQ(world.http->sent()[2].request.timeout, 60s);
}

/// Facts that note how often the documents had been looked at before they were read.
struct WatchingFacts : FakeFacts<ScreenFacts> {
  std::shared_ptr<MemoryDocuments> documents;
  int documentReads = 0;

  ScreenFacts read() override {
    documentReads = documents->reads;
    return facts;
  }
};

TEST(StartupTest, DeviceIdentifierIsStoredThenErrorsThenCrashesThenTheSession) {
  const auto facts = std::make_shared<WatchingFacts>();
  ManagerWorld world([&](Platform& seam) { seam.facts.screen = facts; });
  facts->documents = world.documents;
  world.put({"activity1.json", "communicationError1.json", "crash1.json"});
  world.http->answer(ManagerWorld::kDevicePath, okReply(R"({"response":{"deviceID":"d-7"}})"));
  world.setup();
  world.manager->initializeDeviceId();
  world.time->run();
  const SentRequest asked = world.http->sentTo(ManagerWorld::kDevicePath)[0];
  EXPECT_EQ(textOf(asked.body["device_data"]),
            R"({"collectTime":1700000000000,"uuid":"0F1E2D3C-4B5A-4978-8796-A5B4C3D2E1F0"})");
  EXPECT_EQ(textOf(asked.body["keys"]["device_id"]), R"("no_device_id")");
  EXPECT_EQ(world.manager->getDeviceId(), "d-7");
  std::vector<std::string> services;
  for (const SentRequest& sent : world.http->sent()) {
    if (*findText(sent.body["keys"], "device_id") == "d-7") services.push_back(sent.request.url);
  }
  const std::string server = ManagerWorld::kServer;
  EXPECT_THAT(services,
              ElementsAre(server + ManagerWorld::kErrorPath, server + ManagerWorld::kCrashPath,
                          server + ManagerWorld::kSessionPath));
  // Twice two listings, without and with the lock, and two files: the facts of the session were
  // asked for after the uploads.
  EXPECT_EQ(facts->documentReads, 6);
  // The same identifier again does all of it again.
  world.manager->initializeDeviceId();
  world.time->run();
  EXPECT_EQ(world.http->countTo(ManagerWorld::kSessionPath), 2U);
  EXPECT_THAT(world.documents->files, ElementsAre(testing::Key("activity1.json")));
}

TEST(StartupTest, DeviceIdentifierIsReadFromEitherPlaceAndOddOnesChangeNothing) {
  const std::vector<std::pair<const char*, const char*>> replies = {
      {R"({"deviceID":"top"})", "top"},
      {R"({"deviceID":"top","response":{"deviceID":"inner"}})", "inner"},
      {R"({"deviceID":"top","response":{"deviceID":7}})", "top"},
      {R"({"response":{"deviceID":"no_device_id"}})", "no_device_id"},
      {R"({"response":{"deviceID":7}})", "no_device_id"},
      {R"({"response":"OK"})", "no_device_id"},
      {"{}", "no_device_id"},
      {"[]", "no_device_id"},
      {R"("deviceID")", "no_device_id"},
      {"null", "no_device_id"},
  };
  for (const auto& [reply, expected] : replies) {
    ManagerWorld world;
    world.http->answer(ManagerWorld::kDevicePath, okReply(reply));
    world.setup();
    world.manager->initializeDeviceId();
    world.time->advance(1min);
    EXPECT_EQ(world.manager->getDeviceId(), expected) << reply;
    EXPECT_EQ(world.http->countTo(ManagerWorld::kDevicePath), 1U) << reply;
  }
}

TEST(StartupTest, FailedDeviceIdentifierIsRetriedWhileNoneIsStored) {
  ManagerWorld world;
  const std::int64_t start = world.time->nowMilliseconds();
  world.http->answer(ManagerWorld::kDevicePath, statusReply(500));
  world.setup();
  world.manager->getDeviceIdThread();
  world.time->advance(25s);
  EXPECT_THAT(secondsOfCalls(world, ManagerWorld::kDevicePath, start), ElementsAre(10, 20));
  world.store->write("deviceId", "from elsewhere");
  world.time->advance(10min);
  EXPECT_EQ(world.http->countTo(ManagerWorld::kDevicePath), 2U);
}

TEST(StartupTest, EmulatorIsProbedAfterADeviceIdentifierInDebugModeAlone) {
  for (const bool isDebug : {false, true}) {
    ManagerWorld world;
    std::optional<DebugLines> debug;
    if (isDebug) debug.emplace();
    world.http->answer(ManagerWorld::kDevicePath, okReply(R"({"deviceID":"d"})"));
    world.configure(ManagerWorld::kTraceManager);
    world.context->tracing->clear();
    world.manager->initializeDeviceId();
    world.time->run();
    EXPECT_EQ(testing::Value(world.traces(), Contains("checkSensorForEmulator Start")), isDebug);
  }
}

}  // namespace
}  // namespace quorvance
