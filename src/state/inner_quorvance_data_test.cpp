#include "state/inner_quorvance_data.h"

#include <gtest/gtest.h>

#include <functional>
#include <latch>
#include <set>
#include <thread>

#include "platform/testing/test_world.h"

namespace quorvance {
namespace {

constexpr std::string_view kVendor = "0F1E2D3C-4B5A-4978-8796-A5B4C3D2E1F0";

struct StateWorld : TestWorld {
  InnerQuorvanceData state{time, store, identity};
};

// Starts all threads at once and collects what each of them got.
std::vector<StoredValue> valuesOfEightThreads(const std::function<StoredValue()>& read) {
  constexpr std::size_t kThreads = 8;
  std::latch start(kThreads);
  std::vector<StoredValue> values(kThreads);
  std::vector<std::jthread> threads;
  threads.reserve(kThreads);
  for (StoredValue& value : values) {
    threads.emplace_back([&] {
      start.arrive_and_wait();
      value = read();
    });
  }
  threads.clear();
  return values;
}

TEST(StateTest, AFreshInstallationReadsDefaultsAndKeepsThemButNoServer) {
  StateWorld world;
  EXPECT_EQ(world.state.read(StoredKey::permissionList), StoredValue(std::string()));
  EXPECT_EQ(world.state.read(StoredKey::deviceId), StoredValue(std::string("no_device_id")));
  EXPECT_EQ(world.state.read(StoredKey::userId), StoredValue(std::string("UNKNOWN")));
  EXPECT_EQ(world.state.read(StoredKey::serverUrl), StoredValue());
  EXPECT_EQ(world.store->writes(),
            (std::vector<std::string>{"permissionList", "deviceId", "user_id"}));
  EXPECT_EQ(world.store->synchronizations(), 3);
}

TEST(StateTest, PersistentKeysOutliveARestartAndSessionsDoNot) {
  StateWorld world;
  world.state.write(StoredKey::deviceId, "d");
  world.state.write(StoredKey::userId, "u");
  world.state.write(StoredKey::serverUrl, "https://h");
  world.state.write(StoredKey::permissionList, "CAMERA");
  world.state.write(StoredKey::sessionId, "s");
  world.state.write(StoredKey::sessionTime, std::int64_t{7});
  world.state.write(StoredKey::userId, StoredValue());
  world.state.write(StoredKey::sessionId, StoredValue());
  EXPECT_EQ(world.store->writes(),
            (std::vector<std::string>{"deviceId", "user_id", "serverUrl", "permissionList"}));
  EXPECT_EQ(world.store->synchronizations(), 4);

  InnerQuorvanceData restarted(world.time, world.store, world.identity);
  EXPECT_EQ(restarted.readText(StoredKey::deviceId), "d");
  EXPECT_EQ(restarted.readText(StoredKey::userId), "u");
  EXPECT_EQ(restarted.readText(StoredKey::serverUrl), "https://h");
  EXPECT_EQ(restarted.readText(StoredKey::permissionList), "CAMERA");
  EXPECT_EQ(world.state.currentSession().idSession, "s");
  EXPECT_EQ(world.state.currentSession().timeSession, 7);
  EXPECT_NE(restarted.currentSession().idSession, "s");
  EXPECT_EQ(restarted.currentSession().timeSession, world.time->nowMilliseconds());
}

TEST(StateTest, AValueOfAnotherTypeIsKept) {
  StateWorld world;
  for (const auto* key : {"permissionList", "deviceId", "user_id", "serverUrl"}) {
    world.store->putOther(key);
  }
  for (const StoredKey key :
       {StoredKey::permissionList, StoredKey::deviceId, StoredKey::userId, StoredKey::serverUrl}) {
    EXPECT_EQ(world.state.read(key), StoredValue(OtherStoredValue{}));
    EXPECT_EQ(world.state.readText(key), std::nullopt);
  }
  EXPECT_TRUE(world.store->writes().empty());
}

TEST(StateTest, SessionsOfOneMillisecondHaveDifferentIdentifiersAndTheTrueTime) {
  StateWorld world;
  const std::string owner = std::string(kVendor) + "-";
  for (const auto* number : {"1700000000000", "1700000000001", "1700000000002"}) {
    world.state.startNewSession();
    EXPECT_EQ(world.state.currentSession().idSession, owner + number);
    EXPECT_EQ(world.state.currentSession().timeSession, 1'700'000'000'000);
  }
  world.time->advance(std::chrono::milliseconds(2));
  world.state.startNewSession();
  EXPECT_EQ(world.state.currentSession().idSession, owner + "1700000000003");
  world.time->advance(std::chrono::seconds(1));
  world.state.startNewSession();
  EXPECT_EQ(world.state.currentSession().idSession, owner + "1700000001002");
  world.time->advance(std::chrono::seconds(-60));
  world.state.startNewSession();
  EXPECT_EQ(world.state.currentSession().idSession, owner + "1700000001003");
  EXPECT_EQ(world.state.currentSession().timeSession, 1'699'999'941'002);
}

TEST(StateTest, SessionsHaveIdentifiersWithoutAVendorToo) {
  StateWorld world;
  world.identity->vendor.reset();
  InnerQuorvanceData sourceless(world.time, world.store, nullptr);
  EXPECT_EQ(sourceless.vendorIdentifier(), std::nullopt);
  const std::string a = world.state.currentSession().idSession;
  const std::string b = sourceless.currentSession().idSession;
  EXPECT_NE(a, b);
  for (const std::string& identifier : {a, b}) {
    EXPECT_TRUE(identifier.ends_with("-1700000000000")) << identifier;
  }
}

// Without a vendor each identifier that is made is another one.
TEST(StateTest, AMarkedSessionIsIdentifiedOnceByWhomeverComesFirst) {
  StateWorld world;
  world.identity->vendor.reset();
  const SessionMark first = world.state.markSession();
  world.time->advance(std::chrono::milliseconds(5));
  const SessionMark second = world.state.markSession();
  world.state.startNewSession();
  const Session session = world.state.sessionOf(second);
  EXPECT_EQ(world.state.sessionOf(first).idSession, session.idSession);
  EXPECT_TRUE(session.idSession.ends_with("-1700000000000"));
  EXPECT_EQ(session.timeSession, 1'700'000'000'000);
  EXPECT_TRUE(world.state.currentSession().idSession.ends_with("-1700000000005"));

  StateWorld other;
  other.identity->vendor.reset();
  const SessionMark mark = other.state.markSession();
  const Session current = other.state.currentSession();
  EXPECT_EQ(other.state.sessionOf(mark).idSession, current.idSession);
  EXPECT_EQ(other.state.sessionOf(other.state.markSession()).idSession, current.idSession);
}

// The identifier of a session that is read first begins another one on its way.
TEST(StateTest, ASessionThatIsBegunInTheMidstOfAFirstReadIsTheOneThatIsRead) {
  struct MarkingIdentity : FakeIdentity {
    std::optional<std::string> vendorIdentifier() override {
      if (state != nullptr && !mark) mark = state->markSession();
      return std::nullopt;
    }
    InnerQuorvanceData* state = nullptr;
    std::optional<SessionMark> mark;
  };
  StateWorld world;
  const auto identity = std::make_shared<MarkingIdentity>();
  InnerQuorvanceData state(world.time, world.store, identity);
  identity->state = &state;
  const Session read = state.currentSession();
  ASSERT_TRUE(identity->mark);
  EXPECT_EQ(state.sessionOf(*identity->mark).idSession, read.idSession);
  EXPECT_EQ(state.currentSession().idSession, read.idSession);
}

TEST(StateConcurrencyTest, FirstReadsOfEightThreadsYieldOneValue) {
  for (int round = 0; round < 50; ++round) {
    StateWorld world;
    for (const StoredKey key :
         {StoredKey::sessionId, StoredKey::sessionTime, StoredKey::deviceId}) {
      const auto values = valuesOfEightThreads([&] { return world.state.read(key); });
      for (const StoredValue& value : values) {
        ASSERT_EQ(value, values.front());
        ASSERT_NE(value, StoredValue());
      }
      EXPECT_EQ(world.state.read(key), values.front());
    }
  }
}

TEST(StateTest, AConfigurationIsReplacedWholeAndOlderReadersKeepTheirs) {
  StateWorld world;
  const auto before = world.state.sdkConfig();
  SdkConfig config;
  config.timeoutConnection = 9;
  config.tracingDataQvData->levelQvManager = true;
  world.state.replaceSdkConfig(config);
  EXPECT_EQ(before->timeoutConnection, 5);
  EXPECT_EQ(world.state.sdkConfig()->timeoutConnection, 9);
  EXPECT_TRUE(world.state.traceLevels().isOn(TraceLevel::qvManager));
}

}  // namespace
}  // namespace quorvance
