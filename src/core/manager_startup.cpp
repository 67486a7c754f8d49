#include <utility>

#include "base/debug.h"
#include "base/out_of_memory.h"
#include "base/text.h"
#include "core/manager_core.h"
#include "core/response_text.h"
#include "network/url_text.h"

namespace quorvance {
namespace {

// "deviceID" is looked for in the object under "response" first, then at the top of the reply.
const std::string* deviceIdIn(const Json& reply) {
  if (const Json* response = findObject(reply, "response")) {
    if (const std::string* deviceId = findText(*response, "deviceID")) return deviceId;
  }
  return findText(reply, "deviceID");
}

bool hasAnyLevel(const std::optional<TracingDataQvData>& levels) {
  return levels &&
         (levels->levelException.value_or(false) || levels->levelQvManager.value_or(false) ||
          levels->levelSendingData.value_or(false) ||
          levels->levelFaceVerificationData.value_or(false));
}

}  // namespace

bool ManagerCore::setup(const std::string& serverUrl, const std::optional<std::string>& userId,
                        PlatformError* error) {
  OperationTrace trace(*context_->tracing, "setup", [&] {
    return std::vector{serverUrl, textOrNil(userId)};
  });
  if (serverUrl.empty()) {
    trace.leaveOpen();  // a setup that failed never ended
    if (error != nullptr) *error = QuorvanceError::platformError();
    return false;
  }
  configureServerUrl(serverUrl);
  configureUserId(userId);
  const auto& version = context_->platform.hostApplication.shortVersion;
  if (version) debugPrint(*version);
  // Nothing is measured between the two readings; the line is kept as it stands.
  const std::int64_t before = context_->state->now();
  const std::int64_t after = context_->state->now();
  if (isInDebugMode()) {
    debugPrint("QuorvanceManager: time to init device data manager: " +
               textOf(static_cast<double>(after - before)));
  }
  configuration_.ask(shared_from_this());
  context_->deviceData->refresh();
  return true;
}

void ManagerCore::configureServerUrl(const std::optional<std::string>& serverUrl) {
  const OperationTrace trace(*context_->tracing, "configure(serverUrl:)",
                             [&] { return std::vector{textOrNil(serverUrl)}; });
  identity().configureServerUrl(serverUrl);
  if (!serverUrl || !isInDebugMode()) return;
  if (const std::string_view fault = faultOfServerUrl(*serverUrl); !fault.empty()) {
    debugPrint("the server's URL cannot work: " + std::string(fault));
  }
}

void ManagerCore::configureUserId(const std::optional<std::string>& userId) {
  const OperationTrace trace(*context_->tracing, "configure(userId:)",
                             [&] { return std::vector{textOrNil(userId)}; });
  if (userId) identity().configureUserId(*userId);
}

void ManagerCore::configureDeviceId(const std::string& deviceId) {
  const OperationTrace trace(*context_->tracing, "configure(deviceId:)",
                             [&] { return std::vector{deviceId}; });
  identity().configureDeviceId(deviceId);
}

// The body names the system, which is read off the host's thread.
RetriedExchange::Rules ManagerCore::configurationRules() {
  return {.service = Service::getSdkConfiguration,
          .traceName = "getSdkConfiguration",
          .whenReady =
              [this](Task task) {
                context_->deviceData->whenConfigurationBodyIsReady(std::move(task));
              },
          .makeBody = [this] { return context_->deviceData->configurationBody(); },
          .take = [this](const auto& answer) { return takeConfiguration(answer); },
          .isNeeded = [this] { return !isShutDown() && flags_.repeatSdkConfig; }};
}

bool ManagerCore::takeConfiguration(const RetriedExchange::Answer& answer) {
  const ResponceObject& response = answer.response;
  if (!response.succeeded() || !response.output) return false;
  flags_.repeatSdkConfig = false;
  hasMemoryFor([&] { appendResponse(answer.trace, response); });
  if (hasMemoryFor([&] { saveSdkConfiguration(*response.output); })) return true;
  flags_.repeatSdkConfig = true;
  return false;
}

void ManagerCore::getSdkConfigurationThread() { configuration_.askLater(shared_from_this()); }

void ManagerCore::saveSdkConfiguration(const Json& dictionary) {
  const OperationTrace trace(*context_->tracing, "saveSdkConfiguration",
                             [&] { return std::vector{textOf(dictionary)}; });
  const SdkConfig config = SdkConfig::fromJson(dictionary);
  context_->state->replaceSdkConfig(config);
  flags_.repeatSdkConfig = false;
  if (config.enableCrashEye.value_or(false)) context_->crashEye->install(weak_from_this());
  if (hasAnyLevel(config.tracingDataQvData)) sendingTracingData();
}

RetriedExchange::Rules ManagerCore::deviceIdRules() {
  return {.service = Service::getDeviceId,
          .traceName = "initializeDeviceId",
          .whenReady = [](const Task& task) { task(); },
          .makeBody = [this] { return context_->deviceData->deviceIdBody(); },
          .take = [this](const auto& answer) { return takeDeviceId(answer); },
          .isNeeded = [this] { return !isShutDown() && getDeviceId() == kNoDeviceId; }};
}

// A reply without an identifier, be it no object at all, changes nothing.
bool ManagerCore::takeDeviceId(const RetriedExchange::Answer& answer) {
  const ResponceObject& response = answer.response;
  if (!response.succeeded()) return false;
  hasMemoryFor([&] { appendResponse(answer.trace, response); });
  const std::string* deviceId = response.output ? deviceIdIn(*response.output) : nullptr;
  if (deviceId != nullptr && *deviceId != kNoDeviceId) {
    acceptDeviceId(*deviceId, answer.pending);
  }
  return true;
}

void ManagerCore::initializeDeviceId() { deviceId_.ask(shared_from_this()); }

void ManagerCore::getDeviceIdThread() { deviceId_.askLater(shared_from_this()); }

// The same identifier again does all of it again.
void ManagerCore::acceptDeviceId(const std::string& deviceId, const PendingWork::Mark& cause) {
  configureDeviceId(deviceId);
  // Reports that find no memory wait for the next identifier, the session does not.
  hasMemoryFor([&] { uploadStoredReports(ReportCategory::communicationError); });
  hasMemoryFor([&] { uploadStoredReports(ReportCategory::crash); });
  sendDataWithNewSession(cause);
  hasMemoryFor([&] {
    if (isInDebugMode()) checkSensorForEmulator();
  });
  hasMemoryFor([&] { tellDeviceIdentifier(deviceId, cause); });
}

void ManagerCore::sendingTracingData() { traceUploader_.start(shared_from_this()); }

}  // namespace quorvance
