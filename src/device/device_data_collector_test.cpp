#include "device/device_data_collector.h"

#include <gtest/gtest.h>

#include "base/json_test_support.h"
#include "platform/testing/test_world.h"

namespace quorvance {
namespace {

struct CollectorWorld : TestWorld {
  CollectorWorld() { restart(); }

  // What a new process would make of the same store.
  void restart() {
    state = std::make_shared<InnerQuorvanceData>(time, store, identity);
    collector = std::make_shared<DeviceDataCollector>(platform(), state);
  }

  std::shared_ptr<InnerQuorvanceData> state;
  std::shared_ptr<DeviceDataCollector> collector;
};

TEST(PermissionListTest, UnknownWordsAndRepetitionsAreSkipped) {
  const std::vector<MobilePermission> expected = {MobilePermission::PHOTO,
                                                  MobilePermission::CAMERA};
  for (const std::string_view stored :
       {"PHOTO,CAMERA", ",PHOTO,,CAMERA,", "PHOTO,MICROPHONE,CAMERA", "PHOTO,PHOTO,CAMERA,PHOTO",
        "photo,PHOTO, CALENDAR,CAMERA", "\xFF,PHOTO,5,CAMERA"}) {
    EXPECT_EQ(readPermissionList(stored), expected) << stored;
  }
  for (const std::string_view stored : {"", ",", ",,,", "CALENDARS", "{}"}) {
    EXPECT_TRUE(readPermissionList(stored).empty()) << stored;
  }
}

TEST(DeviceDataCollectorTest, TheConfigurationRequestNamesTheModelInEveryMode) {
  CollectorWorld world;
  EXPECT_EQ(compactText(world.collector->configurationBody({})), "{}");
  const std::string text = R"({"iosVersion":"12","model":"Model-1","kindModel":"handset"})";
  EXPECT_EQ(compactText(world.collector->configurationBody(world.system->facts)), text);
  const DebugLines debug;
  EXPECT_EQ(compactText(world.collector->configurationBody(world.system->facts)), text);
}

TEST(DeviceDataCollectorTest, TheIdentifierRequestCarriesTheAdvertisingIdentifierWhenAllowed) {
  CollectorWorld world;
  const std::string head = R"({"device_data":{"collectTime":1700000000000,)"
                           R"("uuid":"0F1E2D3C-4B5A-4978-8796-A5B4C3D2E1F0")";
  EXPECT_EQ(compactText(world.collector->deviceIdBody()), head + "}}");
  world.identity->advertising = "A";
  EXPECT_EQ(compactText(world.collector->deviceIdBody()), head + R"(,"idfa":"A"}})");
}

TEST(DeviceDataCollectorTest, WhatTheHostAskedForIsKeptOnceEachInTheOrderOfAsking) {
  CollectorWorld world;
  EXPECT_TRUE(world.collector->askPermissions().empty());
  EXPECT_EQ(world.store->entries().at("permissionList").text, "");
  for (const MobilePermission permission :
       {MobilePermission::PHOTO, MobilePermission::CAMERA, MobilePermission::PHOTO}) {
    world.collector->recordAsked(permission);
  }
  EXPECT_EQ(world.store->entries().at("permissionList").text, "PHOTO,CAMERA");
  world.restart();
  world.collector->recordAsked(MobilePermission::REMINDER);
  EXPECT_EQ(world.collector->askPermissions(),
            (std::vector<MobilePermission>{MobilePermission::PHOTO, MobilePermission::CAMERA,
                                           MobilePermission::REMINDER}));
}

TEST(DeviceDataCollectorTest, DebugModeAddsItsKeysAndPrintsTheDevice) {
  CollectorWorld world;
  DeviceFacts facts;
  facts.posture.orientation = 1;
  EXPECT_FALSE(world.collector->deviceDataJson(facts).contains("orientation"));
  const DebugLines debug;
  const Json json = world.collector->deviceDataJson(facts);
  EXPECT_TRUE(json.contains("orientation"));
  EXPECT_EQ(debug.lines(), std::vector<std::string>{"device_data:  " + compactText(json)});
}

}  // namespace
}  // namespace quorvance
