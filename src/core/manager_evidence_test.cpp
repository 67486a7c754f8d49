#include <gmock/gmock.h>

#include "core/recording_parts_test_support.h"

namespace quorvance {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

TEST(EvidenceTest, FirstListenerWithTheActivityMapOnTellsTheStart) {
  ManagerWorld world;
  world.setup();
  world.time->run();
  const auto view = std::shared_ptr<View>();
  EXPECT_NE(world.manager->startNewScreenListener(ScreenListenerType::GENERAL, 1, view), nullptr);
  EXPECT_THAT(world.asked->lines, ElementsAre("listener"));
  world.configure(R"({"activity_map": true,
                      "screen_listeners_list": [{"screenListenerType": "GENERAL", "screenId": 1},
                                                {"screenListenerType": "GENERAL"}]})");
  world.time->advance(3s);
  world.asked->lines.clear();
  world.manager->startNewScreenListener(ScreenListenerType::GENERAL, 1, view);
  world.manager->startNewScreenListener(ScreenListenerType::GENERAL, 2, view);
  world.time->run();
  EXPECT_THAT(world.asked->lines, ElementsAre("store activity", "listener", "listener"));
  EXPECT_EQ(textOf(world.asked->stored[0]),
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

TEST(EvidenceTest, CrashIsKeptUnderItsSignalsNumber) {
  ManagerWorld world;
  CrashModel crash{CrashModelType::signal,
                   "SIGBUS",
                   "Signal SIGBUS(10) was raised.\n",
                   "1.0.0",
                   "12",
                   "m",
                   "frame"};
  world.manager->crashEyeDidCatchCrash(crash);
  crash.name = "OTHER";
  world.manager->crashEyeDidCatchCrash(crash);
  crash = {CrashModelType::exception, "SIGBUS", "why", "1.0.0", "12", "m", "frame"};
  world.manager->crashEyeDidCatchCrash(crash);
  world.time->run();
  EXPECT_THAT(world.asked->lines, ElementsAre("store crash", "store crash", "store crash"));
  EXPECT_EQ(textOf(world.asked->stored[0]),
            R"({"error_stack":"frame","version":"12","device_model":"m","sdk_version":"1.0.0",)"
            R"("cause":"Signal SIGBUS(10) was raised.\n","error_type":"SIGBUS","error_code":10,)"
            R"("error_timestamp":1700000000000})");
  EXPECT_EQ(findMember(world.asked->stored[1], "error_code"), nullptr);
  EXPECT_EQ(findMember(world.asked->stored[2], "error_code"), nullptr);
}

}  // namespace
}  // namespace quorvance
