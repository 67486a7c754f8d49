// A user's journey as a file tells it: docs/journeys.md describes the format. Start reading here.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "apps/demo_host/demo_crash.h"
#include "apps/demo_host/journey_json.h"
#include "apps/demo_host/recorded_screen.h"
#include "quorvance/check_point.h"
#include "quorvance/mobile_permission.h"
#include "quorvance/platform/host_application.h"
#include "quorvance/risk.h"
#include "quorvance/screen_listener_type.h"

namespace demo_host {

inline constexpr std::size_t kMaxSteps = 10'000;
inline constexpr std::chrono::milliseconds kMaxWait = std::chrono::minutes(10);
inline constexpr const char* kDefaultApplication = "com.quorvance.demo";

// What the host reports once its own operation is over.
struct Outcome {
  quorvance::CheckPointStatus status = quorvance::CheckPointStatus::CANCELLED;
  std::optional<std::string> transactionId;
};

// Reports a checkpoint and waits for its verdict.
struct VerdictStep {
  std::shared_ptr<const quorvance::CheckPoint> checkPoint;
  // Absent: any verdict will do.
  std::optional<quorvance::RiskLevel> expected;
  std::optional<Outcome> outcome;
};

// Reports a checkpoint and goes on.
struct ReportStep {
  std::shared_ptr<const quorvance::CheckPoint> checkPoint;
};

struct WaitStep {
  std::chrono::milliseconds time{0};
};

struct LogoutStep {};

// Tells the library who the user is from now on.
struct UserStep {
  std::string userId;
};

// Tells the library that the host asked its user for a permission.
struct PermissionStep {
  quorvance::MobilePermission permission{};
};

// The host crashes here, once crash capture is on; what follows is not played.
struct CrashStep {
  CrashKind kind{};
};

// The user is on a screen that the library watches.
struct ScreenStep {
  quorvance::ScreenListenerType type{};
  std::int64_t id = 0;
  RecordedScreen recording;
};

using Action = std::variant<VerdictStep, ReportStep, WaitStep, LogoutStep, UserStep, PermissionStep,
                            CrashStep, ScreenStep>;

struct Step {
  Action action;
  // A few words for the reader of the output.
  std::string note;
};

struct JourneySetup {
  std::optional<std::string> userId;
  quorvance::HostApplication application{kDefaultApplication, std::nullopt};
  // Whether the server is asked for a device identifier; without one no session is announced.
  bool wantsDeviceIdentifier = true;
  // Whether the library prints its diagnostic lines and records the magnetic field.
  bool debug = false;
};

// What a risk server that the demo starts is given.
struct ServerFiles {
  std::optional<std::filesystem::path> config;
  std::optional<std::filesystem::path> rules;
  std::optional<std::filesystem::path> faults;
};

struct Journey {
  std::string title;
  JourneySetup setup;
  ServerFiles server;
  std::vector<Step> steps;
};

// Throws PlacedError. Other files are looked for relative to `folder`; the server's must be JSON.
Journey parseJourney(const Json& json, const std::filesystem::path& folder);

// As above; throws InputError with the file in front of the message.
Journey loadJourney(const std::filesystem::path& file);

}  // namespace demo_host
