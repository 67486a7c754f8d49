#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "biometrics/bio_sensor_event_data.h"
#include "biometrics/motion_row.h"
#include "biometrics/touch_event.h"
#include "quorvance/screen_listener_type.h"

namespace quorvance {

/// Text lines beyond this stop the motion sensors at the next touch.
inline constexpr std::size_t kMaxTextLines = 399;

/// What a listener has recorded of its screen. Touches come on the host's thread, motion on the
/// main queue, which need not be the same: any thread, guarded by one mutex, and nothing is called
/// while it is held.
///
/// Rows are only ever appended, so a touch in progress and a snapshot are no copies but the lengths
/// of the lists at that moment. Text lines and dictionaries are made when they are read.
class ScreenRecording {
 public:
  struct Counts {
    std::size_t touchLines = 0;
    std::size_t motionLines = 0;
    bool isFull() const { return touchLines + motionLines > kMaxTextLines; }
    bool isEmpty() const { return touchLines + motionLines == 0; }
  };
  struct Labels {
    ScreenListenerType type{};
    std::int64_t actionId = 0;
  };

  /// The time of the latest press and of the latest touch sample, in milliseconds since 1970.
  void setCurrentPressId(std::int64_t time);
  void setCurrentTouchId(std::int64_t time);
  void addTouch(const TouchRow& row);
  void addTouchEvent(const QuorvanceViewTouchEvent& event);

  /// A sample of gravity, rotation or the magnetic field: the latest values take it.
  SensorEvent addSample(LatestMotion& latest, SensorType type, const MotionSample& sample);
  /// A sample of the accelerometer makes a row. `latest` is guarded by this recording.
  SensorEvent addMotion(LatestMotion& latest, std::int64_t time, const MotionSample& acceleration,
                        bool withMagneticField);

  /// Empties the touch in progress and nothing else.
  void emptyCurrentTouch();
  void takeSnapshot();
  /// The rows of the last snapshot, which is gone then; absent when there is none.
  std::optional<BioSensorEventData> takeSnapshotRows(Labels labels);

  Counts counts() const;
  std::vector<SensorEvent> listSensor() const;
  /// The text lines.
  std::vector<std::string> eventList() const;
  std::vector<std::string> sensorsData() const;
  /// Of the touch in progress.
  std::vector<QuorvanceViewTouchEvent> currentTouch() const;
  std::vector<Json> currentTouchSensors(std::int64_t sessionId) const;

 private:
  struct Lengths {
    std::size_t touches = 0;
    std::size_t events = 0;
    std::size_t motion = 0;
  };
  Lengths lengthsLocked() const;

  mutable std::mutex mutex_;
  std::int64_t currentPressId_ = 0;
  std::int64_t currentTouchId_ = 0;
  std::vector<TouchRow> touches_;
  std::vector<QuorvanceViewTouchEvent> events_;
  std::vector<MotionRow> motion_;
  std::vector<SensorEvent> listSensor_;
  // Where the touch in progress begins.
  Lengths touchStart_;
  std::optional<Lengths> snapshot_;
};

}  // namespace quorvance
