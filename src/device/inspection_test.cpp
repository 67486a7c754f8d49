#include "quorvance/inspection.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "base/json_test_support.h"
#include "device/device_data_manager.h"
#include "platform/testing/test_world.h"

namespace quorvance {
namespace {

/// A bus that is slow to answer.
class SlowAuthorization : public FakeAuthorization {
 public:
  bool hasRead() override { return ++looks > 3; }
  int looks = 0;
};

struct InspectionWorld : TestWorld {
  std::vector<InspectedField> inspect() {
    std::vector<InspectedField> found;
    inspectDevice(platform(), [&](std::vector<InspectedField> fields) { found = fields; });
    EXPECT_TRUE(found.empty()) << "inside the call";
    time->run();
    if (found.empty()) time->advance(std::chrono::seconds(10));
    return found;
  }
  Platform platform() const {
    Platform platform = TestWorld::platform();
    platform.facts.fonts = fonts;
    return platform;
  }

  std::shared_ptr<FakeFacts<FontFacts>> fonts = std::make_shared<FakeFacts<FontFacts>>();
};

const InspectedField& fieldOf(const std::vector<InspectedField>& fields, std::string_view key) {
  static const InspectedField none;
  const auto found = std::find_if(fields.begin(), fields.end(),
                                  [&](const InspectedField& field) { return field.key == key; });
  return found == fields.end() ? none : *found;
}

/// The records as the fields tell them.
Json recordOf(const std::vector<InspectedField>& fields, std::string_view record) {
  Json json = Json::object();
  for (const InspectedField& field : fields) {
    if (field.record != record || !field.isSent) continue;
    json[field.key] = parsedJson(field.value.value_or(""));
  }
  return json;
}

// What the payload holds and the table lacks would go unseen by a review.
TEST(InspectionTest, TellsExactlyWhatASessionWouldCarryInTheModeInForce) {
  for (const bool isDebug : {false, true}) {
    std::optional<DebugLines> debug;
    if (isDebug) debug.emplace();
    InspectionWorld world;
    world.system->facts = {"12", "Sys", "M",  "handset",       "Handset", "Mine", 0,
                           "de", "DE",  "de", "Europe/Berlin", 1 << 20,   true};
    world.screen->facts = {411.9, 731.4, 1080.0, 1920.0};
    world.posture->facts = {3, true, false, true};
    world.power->battery = {0.5F, 2};
    world.network->facts = {"LTE", false, true, "262", "01", "Carrier", "DE"};
    world.fonts->facts = {{"Sans"}, {{"Sans", {"Sans-Bold"}}}};
    world.identity->advertising = "A";
    const auto fields = world.inspect();
    const auto state =
        std::make_shared<InnerQuorvanceData>(world.time, world.store, world.identity);
    DeviceDataManager manager(world.platform(), state,
                              std::make_shared<SystemTexts>(world.environment),
                              std::make_shared<SystemFactsReader>(world.system));
    manager.refresh();
    world.time->run();
    const Json payload = manager.getJson(CheckPointType::GENERAL, true);
    for (const char* const record : {"device_data", "settings_data", "sim_data"}) {
      EXPECT_EQ(compactText(recordOf(fields, record)), compactText(payload.at(record))) << record;
    }
    EXPECT_EQ(fieldOf(fields, "orientation").cost.has_value(), isDebug);
    EXPECT_EQ(fieldOf(fields, "orientation").governedBy, "debug mode");
  }
}

TEST(InspectionTest, NamesSourcesAndWhatIsKnownAndNotSent) {
  InspectionWorld world;
  class Keyboards : public FactSource<AccessibilityFacts> {
   public:
    AccessibilityFacts read() override {
      AccessibilityFacts facts;
      facts.installedKeyboards = {"de"};
      return facts;
    }
    std::string origin(std::string_view field) const override {
      return "test " + std::string(field);
    }
  };
  Platform platform = world.platform();
  platform.facts.accessibility = std::make_shared<Keyboards>();
  std::vector<InspectedField> fields;
  inspectDevice(platform, [&](std::vector<InspectedField> found) { fields = std::move(found); });
  world.time->run();
  EXPECT_EQ(fieldOf(fields, "installKeyboards").value, R"(["de"])");
  EXPECT_FALSE(fieldOf(fields, "installKeyboards").isSent);
  EXPECT_EQ(fieldOf(fields, "labelFontSize").source, "test labelFontSize");
  EXPECT_EQ(fieldOf(fields, "labelFontSize").value, std::nullopt);
  EXPECT_EQ(fieldOf(fields, "storageSize").source, "no source, else 0");
  EXPECT_EQ(fieldOf(fields, "iosVersion").source, "the application's own source");
  std::set<std::pair<std::string, std::string>> names;
  for (const InspectedField& field : fields) {
    EXPECT_TRUE(names.emplace(field.record, field.key).second) << field.key;
    EXPECT_FALSE(field.source.empty() || field.governedBy.empty()) << field.key;
  }
}

TEST(InspectionTest, WaitsForTheFirstReadingOfThePermissionsAndNotForEver) {
  for (const int timeout : {0, -1'000}) {
    InspectionWorld world;
    const auto slow = std::make_shared<SlowAuthorization>();
    slow->looks = timeout;
    slow->answers[AuthorizationSubject::camera] = AuthorizationStatus::authorized;
    slow->answers[AuthorizationSubject::location] = AuthorizationStatus::authorized;
    world.location->fix = LocationFix{.latitude = 47.5};
    world.authorization = slow;
    const auto fields = world.inspect();
    EXPECT_EQ(fieldOf(fields, "camera").value, R"("authorized")");
    EXPECT_EQ(fieldOf(fields, "place").value, R"({"latitude":47.5})");
    EXPECT_GT(slow->looks, timeout);
  }
}

}  // namespace
}  // namespace quorvance
