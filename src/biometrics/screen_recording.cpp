#include "biometrics/screen_recording.h"

#include <iterator>
#include <utility>

namespace quorvance {
namespace {

template <class Row>
std::vector<Row> fromIndex(const std::vector<Row>& rows, std::size_t start) {
  return {std::next(rows.begin(), static_cast<std::ptrdiff_t>(start)), rows.end()};
}

template <class Row>
std::vector<Row> upTo(const std::vector<Row>& rows, std::size_t length) {
  return {rows.begin(), std::next(rows.begin(), static_cast<std::ptrdiff_t>(length))};
}

template <class Row>
std::vector<std::string> textsOf(const std::vector<Row>& rows) {
  std::vector<std::string> texts;
  texts.reserve(rows.size());
  for (const Row& row : rows) texts.push_back(row.text());
  return texts;
}

// The accelerometer's cell is not among them: it is stored with its time.
MotionSample& cellOf(LatestMotion& latest, SensorType type) {
  switch (type) {
    case SensorType::chb_gra:
      return latest.gravity;
    case SensorType::chb_gyr_unc:
      return latest.rotation;
    case SensorType::mag:
      return latest.magneticField;
    case SensorType::chb_lin_acc:
      break;
  }
  return latest.acceleration;
}

}  // namespace

void ScreenRecording::setCurrentPressId(std::int64_t time) {
  const std::lock_guard lock(mutex_);
  currentPressId_ = time;
}

void ScreenRecording::setCurrentTouchId(std::int64_t time) {
  const std::lock_guard lock(mutex_);
  currentTouchId_ = time;
}

void ScreenRecording::addTouch(const TouchRow& row) {
  const std::lock_guard lock(mutex_);
  touches_.push_back(row);
}

void ScreenRecording::addTouchEvent(const QuorvanceViewTouchEvent& event) {
  const std::lock_guard lock(mutex_);
  events_.push_back(event);
}

SensorEvent ScreenRecording::addSample(LatestMotion& latest, SensorType type,
                                       const MotionSample& sample) {
  const std::lock_guard lock(mutex_);
  cellOf(latest, type) = sample;
  return listSensor_.emplace_back(SensorEvent{latest.time, sample.x, sample.y, sample.z, type});
}

SensorEvent ScreenRecording::addMotion(LatestMotion& latest, std::int64_t time,
                                       const MotionSample& acceleration, bool withMagneticField) {
  const std::lock_guard lock(mutex_);
  latest.time = time;
  latest.acceleration = acceleration;
  motion_.push_back(makeMotionRow(latest, withMagneticField, currentTouchId_, currentPressId_));
  return listSensor_.emplace_back(
      SensorEvent{time, acceleration.x, acceleration.y, acceleration.z, SensorType::chb_lin_acc});
}

ScreenRecording::Lengths ScreenRecording::lengthsLocked() const {
  return {touches_.size(), events_.size(), motion_.size()};
}

void ScreenRecording::emptyCurrentTouch() {
  const std::lock_guard lock(mutex_);
  touchStart_ = lengthsLocked();
}

void ScreenRecording::takeSnapshot() {
  const std::lock_guard lock(mutex_);
  snapshot_ = lengthsLocked();
}

std::optional<BioSensorEventData> ScreenRecording::takeSnapshotRows(Labels labels) {
  BioSensorEventData data;
  std::vector<QuorvanceViewTouchEvent> events;
  {
    const std::lock_guard lock(mutex_);
    const auto snapshot = std::exchange(snapshot_, std::nullopt);
    if (!snapshot) return std::nullopt;
    data.eventList = upTo(touches_, snapshot->touches);
    data.sensorsData = upTo(motion_, snapshot->motion);
    events = upTo(events_, snapshot->events);
  }
  data.fraudster = false;
  data.actionType = labels.type;
  data.actionId = labels.actionId;
  auto& touchTimes = data.eventListTS.emplace();
  touchTimes.reserve(events.size());
  for (const auto& event : events) touchTimes.push_back({event.motEveTime, event.view_id});
  auto& motionTimes = data.sensorsTS.emplace();
  motionTimes.reserve(data.sensorsData->size());
  for (const MotionRow& row : *data.sensorsData) motionTimes.push_back(row.time);
  return data;
}

ScreenRecording::Counts ScreenRecording::counts() const {
  const std::lock_guard lock(mutex_);
  return {events_.size(), motion_.size()};
}

std::vector<SensorEvent> ScreenRecording::listSensor() const {
  const std::lock_guard lock(mutex_);
  return listSensor_;
}

std::vector<std::string> ScreenRecording::eventList() const {
  const std::lock_guard lock(mutex_);
  return textsOf(events_);
}

std::vector<std::string> ScreenRecording::sensorsData() const {
  const std::lock_guard lock(mutex_);
  return textsOf(motion_);
}

std::vector<QuorvanceViewTouchEvent> ScreenRecording::currentTouch() const {
  const std::lock_guard lock(mutex_);
  return fromIndex(events_, touchStart_.events);
}

std::vector<Json> ScreenRecording::currentTouchSensors(std::int64_t sessionId) const {
  const std::lock_guard lock(mutex_);
  std::vector<Json> dictionaries;
  for (std::size_t i = touchStart_.motion; i < motion_.size(); ++i) {
    dictionaries.push_back(motion_[i].dictionary(sessionId));
  }
  return dictionaries;
}

}  // namespace quorvance
