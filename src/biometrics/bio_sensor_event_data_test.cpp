#include "biometrics/bio_sensor_event_data.h"

#include "base/json_test_support.h"

namespace quorvance {
namespace {

constexpr const char* kTouchHeader = R"(["x","y","size","pressure","id"])";
constexpr const char* kSensorHeaders =
    R"("sensorHeader":["lin_acc_x","lin_acc_y","lin_acc_z","gyr_unc_x","gyr_unc_y","gyr_unc_z",)"
    R"("gra_x","gra_y","gra_z"],"sensorTSHeader":["nanoTimeSensor"])";

TEST(BioSensorEventDataTest, AbsentListsAreLeftOutEmptyOnesAreWritten) {
  const std::string headers = R"("eventListHeader":)" + std::string(kTouchHeader) +
                              R"(,"eventListTSHeader":)" + kTouchHeader;
  BioSensorEventData data{.actionType = ScreenListenerType::CATALOG_SCREEN};
  EXPECT_EQ(compactText(data.getJson()),
            R"({"actionType":"CATALOG_SCREEN",)" + headers + "," + kSensorHeaders + "}");
  data.fraudster = false;
  data.actionId = -3;
  data.eventList.emplace();
  data.eventListTS = {{17, 59000}};
  data.sensorsData.emplace();
  data.sensorsTS = {18};
  EXPECT_EQ(compactText(data.getJson()),
            R"({"fraudster":false,"actionId":-3,"actionType":"CATALOG_SCREEN",)"
            R"("eventListTS":[[17,59000]],"eventList":[],)" +
                headers + R"(,"sensorsTS":[[18]],)" + kSensorHeaders + R"(,"sensorsData":[]})");
}

}  // namespace
}  // namespace quorvance
