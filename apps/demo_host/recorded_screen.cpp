#include "apps/demo_host/recorded_screen.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>

namespace demo_host {
namespace {

using quorvance::GestureState;
using quorvance::MotionSensor;

// [time, word, x, y, force, radius] and [time, word, x, y, z].
constexpr std::size_t kTouchColumns = 6;
constexpr std::size_t kMotionColumns = 5;

const std::map<std::string, GestureState>& gestureWords() {
  static const std::map<std::string, GestureState> kWords = {
      {"possible", GestureState::possible},   {"began", GestureState::began},
      {"changed", GestureState::changed},     {"ended", GestureState::ended},
      {"cancelled", GestureState::cancelled}, {"failed", GestureState::failed}};
  return kWords;
}

const std::map<std::string, MotionSensor>& sensorWords() {
  static const std::map<std::string, MotionSensor> kWords = {
      {"acceleration", MotionSensor::accelerometer},
      {"gravity", MotionSensor::deviceMotion},
      {"rotation", MotionSensor::gyroscope},
      {"magneticField", MotionSensor::magnetometer}};
  return kWords;
}

double numberAt(const Json& list, std::size_t index, const Pointer& place) {
  const Json& value = list[index];
  if (!value.is_number()) {
    throw PlacedError(place / index, "expected a number, got " + quoted(value));
  }
  return value.get<double>();
}

void requireColumns(const Json& row, std::size_t count, const Pointer& place) {
  if (row.size() == count) return;
  throw PlacedError(
      place, "expected " + std::to_string(count) + " columns, got " + std::to_string(row.size()));
}

std::chrono::milliseconds timeOf(const Json& row, const Pointer& place) {
  if (!row[0].is_number_unsigned() ||
      row[0].get<std::uint64_t>() > static_cast<std::uint64_t>(kMaxScreenTime.count())) {
    throw PlacedError(place / 0, "expected milliseconds from 0 to " +
                                     std::to_string(kMaxScreenTime.count()) + ", got " +
                                     quoted(row[0]));
  }
  return std::chrono::milliseconds(row[0].get<std::int64_t>());
}

[[noreturn]] void refuseWord(const Json& word, const Pointer& place) {
  std::set<std::string> known;
  for (const auto& entry : gestureWords()) known.insert(entry.first);
  for (const auto& entry : sensorWords()) known.insert(entry.first);
  throw PlacedError(place / 1, quoted(word) + " is no kind of row; known are " + listed(known));
}

RecordedRow readRow(const Json& row, const Pointer& place) {
  if (!row.is_array() || row.size() < 2) throw PlacedError(place, "expected a row of columns");
  const std::chrono::milliseconds time = timeOf(row, place);
  const std::string word = row[1].is_string() ? row[1].get<std::string>() : std::string();
  const auto at = [&](std::size_t index) { return numberAt(row, index, place); };
  if (const auto state = gestureWords().find(word); state != gestureWords().end()) {
    requireColumns(row, kTouchColumns, place);
    return {time, RecordedTouch{state->second, {at(2), at(3)}, {at(4), at(5)}}};
  }
  const auto sensor = sensorWords().find(word);
  if (sensor == sensorWords().end()) refuseWord(row[1], place);
  requireColumns(row, kMotionColumns, place);
  return {time, RecordedMotion{sensor->second, {at(2), at(3), at(4)}}};
}

std::vector<RecordedRow> readRows(const Json& json, const Pointer& place) {
  if (!json.is_array() || json.size() > kMaxRecordedRows) {
    throw PlacedError(place,
                      "expected an array of at most " + std::to_string(kMaxRecordedRows) + " rows");
  }
  std::vector<RecordedRow> rows;
  rows.reserve(json.size());
  for (std::size_t i = 0; i < json.size(); ++i) {
    rows.push_back(readRow(json[i], place / i));
    if (i > 0 && rows[i].time < rows[i - 1].time) {
      throw PlacedError(place / i, "is earlier than the row before it");
    }
  }
  return rows;
}

quorvance::ViewFrame readFrame(const Json& json, const Pointer& place) {
  if (!json.is_array()) throw PlacedError(place, "expected [x, y, width, height]");
  requireColumns(json, 4, place);
  const auto at = [&](std::size_t index) { return numberAt(json, index, place); };
  return {at(0), at(1), at(2), at(3)};
}

// The name is for readers of the file. Only a root view has subviews.
RecordedView readView(const Json& json, const Pointer& place, bool isRoot) {
  ObjectReader reader(json, place);
  RecordedView view;
  reader.text("name");
  view.frame = readFrame(reader.require("frame"), reader.placeOf("frame"));
  view.tag = reader.integer("tag", INT64_MIN, INT64_MAX).value_or(0);
  const Json* subviews = isRoot ? reader.find("subviews") : nullptr;
  if (subviews != nullptr) {
    const Pointer list = reader.placeOf("subviews");
    if (!subviews->is_array()) throw PlacedError(list, "expected an array of views");
    for (std::size_t i = 0; i < subviews->size(); ++i) {
      view.subviews.push_back(readView((*subviews)[i], list / i, false));
    }
  }
  reader.finish();
  return view;
}

}  // namespace

std::size_t RecordedScreen::touches() const {
  return static_cast<std::size_t>(std::count_if(rows.begin(), rows.end(), [](const auto& row) {
    return std::holds_alternative<RecordedTouch>(row.what);
  }));
}

RecordedScreen readRecordedScreen(const Json& json, const Pointer& place) {
  ObjectReader reader(json, place);
  RecordedScreen screen;
  reader.text("made");
  screen.view = readView(reader.require("view"), reader.placeOf("view"), true);
  screen.rows = readRows(reader.require("rows"), reader.placeOf("rows"));
  reader.finish();
  return screen;
}

RecordedScreen loadRecordedScreen(const std::filesystem::path& file) {
  const Json json = loadStrictJson(file);
  try {
    return readRecordedScreen(json, Pointer());
  } catch (const InputError& error) {
    throw InputError(file.string() + ": " + error.what());
  }
}

}  // namespace demo_host
