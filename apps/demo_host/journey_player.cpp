#include "apps/demo_host/journey_player.h"

#include <future>
#include <thread>
#include <utility>

#include "apps/demo_host/demo_errors.h"
#include "quorvance/check_point_type.h"

namespace demo_host {
namespace {

using quorvance::CheckPointStatusToString;
using quorvance::CheckPointTypeToString;
using SteadyClock = std::chrono::steady_clock;

// What the library answers until the server has sent an identifier.
constexpr const char* kNoDeviceIdentifier = "no_device_id";

// As the server sees them; the doubled slashes are meant.
constexpr const char* kConfigurationPath = "/qrsk-med/3.0/getSdkConfiguration/";
constexpr const char* kDeviceIdentifierPath = "/qrsk-med/3.0//GetDeviceID/";
constexpr const char* kSessionPath = "/qrsk-med/3.0/SendSessionData/";
constexpr const char* kVerdictPath = "/qrsk-med/3.0/GetCheckpointRisk/";
constexpr const char* kReportPath = "/qrsk-med/3.0/SendCheckpointEvent/";
constexpr const char* kOutcomePath = "/qrsk-med/3.0//UpdateTransactionResult/";
constexpr const char* kBiometricsPath = "/qrsk-med/3.0/BiometricData/";

std::chrono::milliseconds millisecondsSince(SteadyClock::time_point start) {
  return std::chrono::round<std::chrono::milliseconds>(SteadyClock::now() - start);
}

}  // namespace

std::optional<std::string> faultOfVerdict(std::optional<quorvance::RiskLevel> expected,
                                          quorvance::Risk risk) {
  if (!expected && risk.riskLevel == quorvance::RiskLevel::undefined) return "no verdict came";
  if (!expected || *expected == risk.riskLevel) return std::nullopt;
  quorvance::Risk wanted;
  wanted.riskLevel = *expected;
  return "expected " + wanted.stringValue() + ", got " + risk.stringValue();
}

JourneyPlayer::JourneyPlayer(quorvance::QuorvanceManager& manager, JourneyPrinter& printer,
                             ReplayPlatform replay)
    : manager_(manager), printer_(printer), screens_(manager, std::move(replay)) {}

void JourneyPlayer::setUp(const JourneySetup& setup, const std::string& url) {
  quorvance::PlatformError error;
  if (!manager_.setupWithServerUrl(url, setup.userId, &error)) {
    throw RunError("the library refuses its setup: " + error.text());
  }
  expectCall(kConfigurationPath);
  if (!setup.wantsDeviceIdentifier) return;
  manager_.initializeDeviceId();
  expectCall(kDeviceIdentifierPath);
  // The library announces the session by itself once it has an identifier.
  expectCall(kSessionPath);
  waitForDeviceIdentifier(url);
}

// The library has no signal for this, so it is asked again and again.
void JourneyPlayer::waitForDeviceIdentifier(const std::string& url) {
  const auto deadline = SteadyClock::now() + kDeviceIdentifierTime;
  std::optional<std::string> identifier = manager_.getDeviceId();
  while (identifier == kNoDeviceIdentifier) {
    if (SteadyClock::now() >= deadline) {
      throw RunError("the server at " + url + " sends no device identifier");
    }
    std::this_thread::sleep_for(kLookAgainAfter);
    identifier = manager_.getDeviceId();
  }
  printer_.print("device identifier  " + identifier.value_or("none"));
}

JourneyResult JourneyPlayer::play(const std::vector<Step>& steps) {
  for (std::size_t i = 0; i < steps.size(); ++i) {
    line_ = StepLine{};
    line_.number = i + 1;
    line_.note = steps[i].note;
    std::visit([this](const auto& action) { act(action); }, steps[i].action);
  }
  return std::move(result_);
}

JourneyPlayer::Verdict JourneyPlayer::ask(const quorvance::CheckPoint& checkPoint) {
  // Shared with the completion, which may come after this step was given up.
  auto promise = std::make_shared<std::promise<Verdict>>();
  std::future<Verdict> future = promise->get_future();
  manager_.getRiskForCheckPoint(
      checkPoint, [promise](quorvance::Risk risk, std::string, std::string requestId) {
        promise->set_value({risk, std::move(requestId)});
      });
  if (future.wait_for(kVerdictTime) != std::future_status::ready) {
    throw RunError(nameOfStep() + ": the library gave no answer in " +
                   std::to_string(kVerdictTime.count()) + " s");
  }
  return future.get();
}

std::string JourneyPlayer::nameOfStep() const {
  return "step " + std::to_string(line_.number) + " (" + line_.what + ")";
}

void JourneyPlayer::act(const VerdictStep& step) {
  line_.what = CheckPointTypeToString::toString(step.checkPoint->type());
  const auto start = SteadyClock::now();
  const Verdict verdict = ask(*step.checkPoint);
  line_.time = formatTime(millisecondsSince(start));
  line_.result = verdict.risk.stringValue();
  line_.requestId = verdict.requestId;
  printer_.printStep(line_);
  ++result_.verdicts;
  if (verdict.risk.riskLevel != quorvance::RiskLevel::undefined) expectCall(kVerdictPath);
  if (const auto fault = faultOfVerdict(step.expected, verdict.risk)) {
    printer_.print("      !! " + *fault);
    result_.faults.push_back(nameOfStep() + ": " + *fault);
  }
  if (step.outcome) report(step.checkPoint->type(), verdict.requestId, *step.outcome);
}

void JourneyPlayer::report(quorvance::CheckPointType type, const std::string& requestId,
                           const Outcome& outcome) {
  manager_.updateCheckPointStatus(type, requestId, outcome.status, outcome.transactionId);
  expectCall(kOutcomePath);
  StepLine line;
  line.what = "outcome";
  line.result = CheckPointStatusToString::toString(outcome.status);
  line.requestId = requestId;
  if (outcome.transactionId) line.note = "transaction " + *outcome.transactionId;
  printer_.printStep(line);
}

void JourneyPlayer::act(const ReportStep& step) {
  manager_.arriveToCheckPoint(*step.checkPoint);
  expectCall(kReportPath);
  line_.what = CheckPointTypeToString::toString(step.checkPoint->type());
  line_.result = "reported";
  printer_.printStep(line_);
}

void JourneyPlayer::act(const WaitStep& step) {
  std::this_thread::sleep_for(step.time);
  line_.what = "wait";
  line_.time = formatTime(step.time);
  printer_.printStep(line_);
}

void JourneyPlayer::act(const LogoutStep&) {
  manager_.logout();
  expectCall(kSessionPath);
  line_.what = "logout";
  printer_.printStep(line_);
  StepLine session;
  session.what = "new session";
  session.requestId = manager_.getSessionId().value_or("");
  printer_.printStep(session);
}

void JourneyPlayer::act(const UserStep& step) {
  manager_.configureWithUserId(step.userId);
  line_.what = "user";
  line_.requestId = step.userId;
  printer_.printStep(line_);
}

void JourneyPlayer::act(const PermissionStep& step) {
  manager_.onRequestAccessWithTypeMobilePermission(step.permission);
  line_.what = "permission";
  line_.requestId = quorvance::MobilePermissionToString::toString(step.permission);
  printer_.printStep(line_);
}

void JourneyPlayer::act(const CrashStep& step) {
  line_.what = "crash";
  if (!crashCapture_.waitUntilOn()) {
    throw RunError(nameOfStep() + ": the configuration does not switch crash capture on");
  }
  printer_.printStep(line_);
  crashOnPurpose(step.kind);
}

void JourneyPlayer::act(const ScreenStep& step) {
  line_.what = "screen";
  const auto start = SteadyClock::now();
  try {
    screens_.play(step.type, step.id, step.recording);
  } catch (const RunError& error) {
    throw RunError(nameOfStep() + ": " + error.what());
  }
  line_.time = formatTime(millisecondsSince(start));
  line_.requestId = quorvance::ScreenListenerTypeToString::toString(step.type) + " " +
                    std::to_string(step.id) + ", " + std::to_string(step.recording.touches()) +
                    " touches";
  printer_.printStep(line_);
  if (step.recording.touches() > 0) expectCall(kBiometricsPath);
}

}  // namespace demo_host
