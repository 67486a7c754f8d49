#include "biometrics/motion_row.h"

#include <array>
#include <string_view>

#include "base/text.h"

namespace quorvance {
namespace {

std::string_view wordOf(SensorType type) {
  constexpr std::array<std::string_view, 4> kWords = {"chb_lin_acc", "chb_gra", "chb_gyr_unc",
                                                      "mag"};
  return kWords[static_cast<std::size_t>(type)];
}

std::string axesText(const MotionSample& sample) {
  return "," + textOf(sample.x) + "," + textOf(sample.y) + "," + textOf(sample.z);
}

void putAxes(Json::array_t& row, const MotionSample& sample) {
  row.emplace_back(sample.x);
  row.emplace_back(sample.y);
  row.emplace_back(sample.z);
}

void putAxes(Json& dictionary, std::string_view name, const MotionSample& sample) {
  const std::string prefix(name);
  putMember(dictionary, prefix + "_x", sample.x);
  putMember(dictionary, prefix + "_y", sample.y);
  putMember(dictionary, prefix + "_z", sample.z);
}

}  // namespace

std::string SensorEvent::text() const {
  return "[" + std::to_string(timestamp) + axesText({x, y, z}) + "," +
         std::string(wordOf(sensorType)) + "]";
}

std::string MotionRow::text() const {
  return "[" + std::to_string(time) + axesText(acceleration) + axesText(gravity) +
         axesText(rotation) + "]";
}

Json MotionRow::uploadRow() const {
  Json::array_t row;
  row.reserve(magneticField ? 12 : 9);
  putAxes(row, acceleration);
  putAxes(row, rotation);
  putAxes(row, gravity);
  if (magneticField) putAxes(row, *magneticField);
  return row;
}

Json MotionRow::dictionary(std::int64_t sessionId) const {
  Json json = makeObject(13);
  putMember(json, "nanoTimeSensor", time);
  putAxes(json, "acc", acceleration);
  putAxes(json, "gyro", rotation);
  putAxes(json, "gravity", gravity);
  putMember(json, "touchId", touchId);
  putMember(json, "pressId", pressId);
  putMember(json, "sessionId", sessionId);
  return json;
}

MotionRow makeMotionRow(const LatestMotion& latest, bool withMagneticField, std::int64_t touchId,
                        std::int64_t pressId) {
  MotionRow row{.time = latest.time,
                .acceleration = latest.acceleration,
                .rotation = latest.rotation,
                .gravity = latest.gravity,
                .magneticField = std::nullopt,
                .touchId = touchId,
                .pressId = pressId};
  if (withMagneticField) row.magneticField = latest.magneticField;
  return row;
}

}  // namespace quorvance
