// A user's fingers and the device's motion on one screen, as a file tells them: docs/journeys.md
// describes the format.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <variant>
#include <vector>

#include "apps/demo_host/journey_json.h"
#include "quorvance/platform/gesture.h"
#include "quorvance/platform/motion.h"
#include "quorvance/platform/view.h"

namespace demo_host {

inline constexpr std::size_t kMaxRecordedRows = 100'000;
inline constexpr std::chrono::milliseconds kMaxScreenTime = std::chrono::minutes(10);

struct RecordedView {
  quorvance::ViewFrame frame;
  std::int64_t tag = 0;
  std::vector<RecordedView> subviews;
};

struct RecordedTouch {
  quorvance::GestureState state{};
  quorvance::GesturePoint place;
  quorvance::Touch touch;
};

struct RecordedMotion {
  quorvance::MotionSensor sensor{};
  quorvance::MotionSample sample;
};

struct RecordedRow {
  // Since the screen was opened.
  std::chrono::milliseconds time{0};
  std::variant<RecordedTouch, RecordedMotion> what;
};

struct RecordedScreen {
  RecordedView view;
  // In the order of their times.
  std::vector<RecordedRow> rows;

  std::size_t touches() const;
};

// Throws PlacedError.
RecordedScreen readRecordedScreen(const Json& json, const Pointer& place);

// As above; throws InputError with the file in front of the message.
RecordedScreen loadRecordedScreen(const std::filesystem::path& file);

}  // namespace demo_host
