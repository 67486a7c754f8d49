#include "biometrics/bio_sensor_event_data.h"

#include <initializer_list>
#include <string_view>
#include <utility>

namespace quorvance {
namespace {

Json headerOf(std::initializer_list<std::string_view> names) {
  Json::array_t header(names.begin(), names.end());
  return header;
}

Json touchHeader() { return headerOf({"x", "y", "size", "pressure", "id"}); }

Json sensorHeader() {
  return headerOf({"lin_acc_x", "lin_acc_y", "lin_acc_z", "gyr_unc_x", "gyr_unc_y", "gyr_unc_z",
                   "gra_x", "gra_y", "gra_z"});
}

Json rowOf(const TouchRow& touch) {
  Json::array_t row;
  row.reserve(5);
  for (const double value : {touch.x, touch.y, touch.size, touch.pressure}) row.emplace_back(value);
  row.emplace_back(static_cast<double>(touch.action));
  return row;
}

Json rowOf(const BioSensorEventData::TouchTime& time) {
  Json::array_t row(time.begin(), time.end());
  return row;
}

Json rowOf(const MotionRow& motion) { return motion.uploadRow(); }

Json rowOf(std::int64_t time) {
  Json::array_t row(1, Json(time));
  return row;
}

template <class Row>
void putRows(Json& json, std::string_view key, const std::optional<std::vector<Row>>& list) {
  if (!list) return;
  Json rows = Json::array();
  const JsonDiscarder discarder(rows);
  rows.get_ref<Json::array_t&>().reserve(list->size());
  for (const Row& row : *list) rows.push_back(rowOf(row));
  putMember(json, key, std::move(rows));
}

}  // namespace

Json BioSensorEventData::getJson() const {
  Json json = makeObject(11);
  JsonDiscarder discarder(json);
  if (fraudster) putMember(json, "fraudster", *fraudster);
  if (actionId) putMember(json, "actionId", *actionId);
  putMember(json, "actionType", ScreenListenerTypeToString::toString(actionType));
  putRows(json, "eventListTS", eventListTS);
  putRows(json, "eventList", eventList);
  putMember(json, "eventListHeader", touchHeader());
  // Not ["timeEvent", "view_id"]: the server reads the header of the touch rows here too.
  putMember(json, "eventListTSHeader", touchHeader());
  putRows(json, "sensorsTS", sensorsTS);
  putMember(json, "sensorHeader", sensorHeader());
  putMember(json, "sensorTSHeader", headerOf({"nanoTimeSensor"}));
  putRows(json, "sensorsData", sensorsData);
  discarder.keep();
  return json;
}

}  // namespace quorvance
