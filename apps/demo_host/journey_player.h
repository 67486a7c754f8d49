// Plays the steps of a journey, as a host application would.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "apps/demo_host/journey.h"
#include "apps/demo_host/journey_printer.h"
#include "apps/demo_host/screen_player.h"
#include "quorvance/quorvance_manager.h"

namespace demo_host {

// More than the library's longest time-out, which is 60 s.
inline constexpr std::chrono::seconds kVerdictTime{75};
inline constexpr std::chrono::seconds kDeviceIdentifierTime{15};

struct JourneyResult {
  // What went wrong, each naming its step.
  std::vector<std::string> faults;
  std::size_t verdicts = 0;
  // The calls that must reach the server, by full path.
  std::map<std::string, std::int64_t> calls;
};

// What is wrong with a verdict; nothing when it is as expected. Without an expectation every level
// will do but "undefined": then no verdict came.
std::optional<std::string> faultOfVerdict(std::optional<quorvance::RiskLevel> expected,
                                          quorvance::Risk risk);

// One thread. The manager and the printer outlive it.
class JourneyPlayer {
 public:
  JourneyPlayer(quorvance::QuorvanceManager& manager, JourneyPrinter& printer,
                ReplayPlatform replay);

  // Sets the library up; returns once there is a device identifier, when the journey wants one.
  // Throws RunError. `url` ends in a slash.
  void setUp(const JourneySetup& setup, const std::string& url);
  // Plays every step, also after a verdict that was not as expected. Throws RunError when no
  // verdict comes at all.
  JourneyResult play(const std::vector<Step>& steps);

 private:
  struct Verdict {
    quorvance::Risk risk;
    std::string requestId;
  };

  void waitForDeviceIdentifier(const std::string& url);
  // Reports the checkpoint and waits for its verdict.
  Verdict ask(const quorvance::CheckPoint& checkPoint);
  // For messages: "step 4 (LOGIN)".
  std::string nameOfStep() const;
  void act(const VerdictStep& step);
  void act(const ReportStep& step);
  void act(const WaitStep& step);
  void act(const LogoutStep& step);
  void act(const UserStep& step);
  void act(const PermissionStep& step);
  [[noreturn]] void act(const CrashStep& step);
  void act(const ScreenStep& step);
  void report(quorvance::CheckPointType type, const std::string& requestId, const Outcome& outcome);
  void expectCall(const char* path) { ++result_.calls[path]; }

  quorvance::QuorvanceManager& manager_;
  JourneyPrinter& printer_;
  const CrashCapture crashCapture_;
  ScreenPlayer screens_;
  JourneyResult result_;
  // Of the step that is being played.
  StepLine line_;
};

}  // namespace demo_host
