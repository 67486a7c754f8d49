#include <gmock/gmock.h>

#include "core/manager_world_test_support.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;

TEST(EvidenceTest, FirstListenerWithTheActivityMapOnTellsTheStart) {
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
  world.configure(R"({"activity_map": true,
                      "screen_listeners_list": [{"screenListenerType": "GENERAL", "screenId": 1},
                                                {"screenListenerType": "GENERAL"}]})");
  world.time->advance(3s);
  start(1);
  start(2);
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

TEST(EvidenceTest, AskedPermissionsAreStoredOnceEachInOrder) {
  ManagerWorld world;
  world.store->write("permissionList", "CAMERA,NONSENSE,CAMERA");
  world.restart();
  world.manager->onRequestAccess(MobilePermission::PHOTO);
  world.manager->onRequestAccess(MobilePermission::CAMERA);
  EXPECT_EQ(world.store->read("permissionList").text, "CAMERA,PHOTO");
}

TEST(EvidenceTest, PermissionsAreAnsweredFromTheLastReading) {
  ManagerWorld world;
  world.authorization->answers[AuthorizationSubject::camera] = AuthorizationStatus::authorized;
  world.authorization->answers[AuthorizationSubject::location] =
      AuthorizationStatus::authorizedWhenInUse;
  world.setup();
  world.time->run();
  EXPECT_TRUE(world.manager->ifAuthorized(MobilePermission::CAMERA));
  EXPECT_TRUE(world.manager->ifAuthorized(MobilePermission::AUTHORIZED_WHEN_IN_USE));
  EXPECT_FALSE(world.manager->ifAuthorized(MobilePermission::AUTHORIZED_ALWAYS));
  EXPECT_FALSE(world.manager->ifAuthorized(static_cast<MobilePermission>(7)));
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
