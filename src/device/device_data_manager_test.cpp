#include "device/device_data_manager.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>

#include "base/json_test_support.h"
#include "device/check_point_additional_data.h"
#include "platform/testing/test_world.h"
#include "state/class_flags.h"

namespace quorvance {
namespace {

std::string joinedKeys(const Json& object) {
  std::string keys;
  for (const auto& member : object.items()) keys += member.key() + " ";
  return keys;
}

struct PayloadWorld : TestWorld {
  explicit PayloadWorld(const std::function<void(Platform&)>& change = nullptr) {
    Platform seam = platform();
    if (change) change(seam);
    manager.emplace(seam, state, std::make_shared<SystemTexts>(environment),
                    std::make_shared<SystemFactsReader>(seam.facts.system));
  }

  Json getJson(CheckPointType type, std::optional<bool> collectAll) {
    return manager->getJson(type, collectAll);
  }

  std::shared_ptr<InnerQuorvanceData> state =
      std::make_shared<InnerQuorvanceData>(time, store, identity);
  std::optional<DeviceDataManager> manager;
};

// A bus that answers while the user data is collected.
class RefreshingUserData : public UserDataSource {
 public:
  std::function<void()> whileCollecting;
  Json collected = parsedJson(R"({"contacts":[]})");
  Json collect() override {
    if (whileCollecting) whileCollecting();
    return collected;
  }
};

TEST(DeviceDataManagerTest, APayloadTellsTheFactsOfOneMoment) {
  const auto userData = std::make_shared<RefreshingUserData>();
  PayloadWorld world([&](Platform& seam) { seam.userData = userData; });
  const auto read = [&](const char* radio) {
    world.network->facts.radioTechnology = radio;
    world.manager->whenSessionIsReady([] {});
    world.time->run();
  };
  read("LTE");
  userData->whileCollecting = [&] { read("Edge"); };
  const Json payload = world.getJson(CheckPointType::GENERAL, true);
  EXPECT_EQ(compactText(payload.at("user_data")), R"({"contacts":[]})");
  EXPECT_EQ(payload.at("sim_data").at("networkType"), "4G");
  EXPECT_EQ(payload.at("settings_data").at("internetConnectType"), "4G");
  EXPECT_EQ(world.getJson(CheckPointType::GENERAL, true).at("sim_data").at("networkType"), "2G");
}

// A bus answers the second question: the first payload must not be it.
TEST(DeviceDataManagerTest, ARefreshHasEverythingReadAheadAndThePermissionsAskedFor) {
  PayloadWorld world;
  world.screen->facts.nativeWidth = 1080.0;
  world.manager->refresh();
  EXPECT_EQ(world.authorization->questions, 0) << "inside the call";
  world.time->run();
  EXPECT_GT(world.authorization->questions, 0);
  EXPECT_EQ(world.getJson(CheckPointType::GENERAL, true).at("device_data").at("xdpi"), 1080);
}

// Whatever source the host put in.
TEST(DeviceDataManagerTest, TheSimulatorsVariableNamesTheModelBeforeAnySource) {
  PayloadWorld world;
  world.environment->variables["SIMULATOR_MODEL_IDENTIFIER"] = "Sim1,2";
  world.manager->refresh();
  world.time->run();
  const Json payload = world.getJson(CheckPointType::GENERAL, true);
  EXPECT_EQ(world.manager->configurationBody().at("model"), "Sim1,2");
  EXPECT_EQ(payload.at("device_data").at("model"), "Sim1,2");
  EXPECT_EQ(payload.at("settings_data").at("isEmulator"), true);
}

TEST(DeviceDataManagerTest, UpdateDetailsCarriesNothingAndDropsNothing) {
  PayloadWorld world;
  world.manager->setPendingUserData(parsedJson(R"({"a":1})"));
  setSessionDataCollect(true);
  for (const std::optional<bool> collectAll : {std::optional<bool>(), {true}, {false}}) {
    EXPECT_EQ(compactText(world.getJson(CheckPointType::UPDATE_DETAILS, collectAll)), "{}");
  }
  EXPECT_TRUE(sessionDataCollect());
  const std::string plain = "session checkpoint_additional_data ";
  EXPECT_EQ(joinedKeys(world.getJson(CheckPointType::LAUNCH, false)), plain + "user_data ");
  EXPECT_EQ(joinedKeys(world.getJson(CheckPointType::LAUNCH, false)), plain);
}

TEST(DeviceDataManagerTest, PendingUserDataIsDroppedOnceASessionsOwnHasBeenCollected) {
  const auto userData = std::make_shared<RefreshingUserData>();
  PayloadWorld world([&](Platform& seam) { seam.userData = userData; });
  world.manager->setPendingUserData(parsedJson(R"({"a":1})"));
  userData->whileCollecting = [] { throw std::bad_alloc(); };
  EXPECT_THROW(world.getJson(CheckPointType::GENERAL, true), std::bad_alloc);
  EXPECT_EQ(compactText(world.getJson(CheckPointType::LAUNCH, false).at("user_data")),
            R"({"a":1})");
  userData->whileCollecting = [&] { world.manager->setPendingUserData(parsedJson("{}")); };
  EXPECT_EQ(compactText(world.getJson(CheckPointType::GENERAL, true).at("user_data")),
            R"({"contacts":[]})");
  EXPECT_FALSE(world.getJson(CheckPointType::LAUNCH, false).contains("user_data"));
}

// It would keep the whole session from being sent.
TEST(DeviceDataManagerTest, CollectedUserDataThatCannotBeSentCountsAsNone) {
  const auto userData = std::make_shared<RefreshingUserData>();
  PayloadWorld world([&](Platform& seam) { seam.userData = userData; });
  const Json deep = nestedObjects(kMaxJsonDepth);
  Json endless = Json::object();
  endless["a"] = unwritableJson();
  const DebugLines debug;
  for (const Json& odd : {deep, endless, Json(), Json(7), Json::array()}) {
    userData->collected = odd;
    const Json payload = world.getJson(CheckPointType::GENERAL, true);
    EXPECT_EQ(compactText(payload.at("user_data")), "{}");
    EXPECT_TRUE(payload.contains("device_data") && payload.contains("settings_data"));
  }
  EXPECT_TRUE(debug.contain("the collected user data cannot be sent"));
}

TEST(DeviceDataManagerTest, EveryPayloadClearsTheCollectFlag) {
  PayloadWorld world;
  for (const bool collectAll : {false, true}) {
    setSessionDataCollect(true);
    world.getJson(CheckPointType::GENERAL, collectAll);
    EXPECT_FALSE(sessionDataCollect());
  }
}

TEST(DeviceDataManagerDeathTest, AnAbsentFlagStopsTheProcess) {
  PayloadWorld world;
  EXPECT_DEATH(world.getJson(CheckPointType::LOGIN, std::nullopt), "fatal.*collect");
}

TEST(AdditionalDataTest, AlwaysWritesItsThreeLists) {
  EXPECT_EQ(compactText(CheckPointAdditionalData{}.getJson()),
            R"({"permissions":[],"ignorePermissions":[],"askedPermissions":[]})");
  const CheckPointAdditionalData whole{
      .collectTime = 7,
      .location = LocationFix{.altitude = 1.0, .latitude = 2.5, .longitude = 0.1, .accuracy = 4.0},
      .permissions = {MobilePermission::PHOTO, MobilePermission::CAMERA},
      .ignorePermissions = {MobilePermission::REMINDER},
      .askPermissions = {MobilePermission::CAMERA}};
  EXPECT_EQ(compactText(whole.getJson()),
            R"({"collectTime":7,"location":{"accuracy":4.0,"altitude":1.0,"latitude":2.5,)"
            R"("longitude":0.1},"permissions":["PHOTO","CAMERA"],)"
            R"("ignorePermissions":["REMINDER"],"askedPermissions":["CAMERA"]})");
}

// One that counts how often it is asked.
class CountedLocation : public LocationSource {
 public:
  int reads = 0;
  std::optional<LocationFix> lastFix() override {
    ++reads;
    return LocationFix{.longitude = -3.5};
  }
};

TEST(AdditionalDataTest, TellsThePermissionsOfNowAndAPositionOnlyWithPermission) {
  const auto location = std::make_shared<CountedLocation>();
  PayloadWorld world([&](Platform& seam) { seam.location = location; });
  world.authorization->answers[AuthorizationSubject::camera] = AuthorizationStatus::authorized;
  world.manager->recordAsked(MobilePermission::CAMERA);
  for (int raw = 0; raw <= 4; ++raw) {
    world.authorization->answers[AuthorizationSubject::location] =
        static_cast<AuthorizationStatus>(raw);
    const bool mayLocate = raw >= 3;
    location->reads = 0;
    EXPECT_EQ(world.manager->buildAdditionalData().contains("location"), mayLocate) << raw;
    EXPECT_EQ(location->reads, mayLocate ? 1 : 0) << raw;
  }
  world.time->advance(std::chrono::milliseconds(5));
  EXPECT_EQ(compactText(world.manager->buildAdditionalData()),
            R"({"collectTime":1700000000005,"location":{"longitude":-3.5},)"
            R"("permissions":["AUTHORIZED_WHEN_IN_USE","CAMERA"],"ignorePermissions":["PHOTO",)"
            R"("READ_CONTACTS","CALENDAR","REMINDER"],"askedPermissions":["CAMERA"]})");
}

TEST(AdditionalDataTest, MentionsNoLocationWithoutASource) {
  PayloadWorld world([](Platform& seam) { seam.authorization = nullptr; });
  EXPECT_EQ(compactText(world.manager->buildAdditionalData().at("ignorePermissions")),
            R"(["PHOTO","READ_CONTACTS","CAMERA","CALENDAR","REMINDER"])");
}

}  // namespace
}  // namespace quorvance
