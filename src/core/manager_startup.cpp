#include <chrono>
#include <utility>

#include "base/debug.h"
#include "base/text.h"
#include "core/manager_core.h"
#include "core/response_text.h"

namespace quorvance {
namespace {

constexpr std::chrono::seconds kStartupRetryDelay{10};
constexpr std::chrono::seconds kTraceUploadDelay{30};

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
  getSdkConfiguration();
  return true;
}

void ManagerCore::configureServerUrl(const std::optional<std::string>& serverUrl) {
  const OperationTrace trace(*context_->tracing, "configure(serverUrl:)",
                             [&] { return std::vector{textOrNil(serverUrl)}; });
  identity().configureServerUrl(serverUrl);
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

// The body names the system, which is read off this thread; identity and session are those of now.
void ManagerCore::getSdkConfiguration() {
  const OperationTrace trace(*context_->tracing, "getSdkConfiguration");
  context_->facts->whenSystemKnown([self = shared_from_this(), kept = trace.continuation(),
                                    call = networkManager_->prepare(Service::getSdkConfiguration)] {
    self->networkManager_->send(call, self->context_->collector->configurationBody(),
                                [self, kept](const ResponceObject& response) {
                                  self->receiveSdkConfiguration(response, kept);
                                });
  });
}

void ManagerCore::receiveSdkConfiguration(const ResponceObject& response, TraceContinuation trace) {
  if (!response.succeeded() || !response.output) {
    getSdkConfigurationThread();
    return;
  }
  flags_.repeatSdkConfig = false;
  appendResponse(trace, response);
  saveSdkConfiguration(*response.output);
}

void ManagerCore::getSdkConfigurationThread() {
  schedule(kStartupRetryDelay, [](ManagerCore& self) {
    if (self.flags_.repeatSdkConfig) self.getSdkConfiguration();
  });
}

void ManagerCore::saveSdkConfiguration(const Json& dictionary) {
  const OperationTrace trace(*context_->tracing, "saveSdkConfiguration",
                             [&] { return std::vector{textOf(dictionary)}; });
  const SdkConfig config = SdkConfig::fromJson(dictionary);
  context_->state->replaceSdkConfig(config);
  flags_.repeatSdkConfig = false;
  if (config.enableCrashEye.value_or(false)) context_->crashCatcher->install(weak_from_this());
  if (hasAnyLevel(config.tracingDataQvData)) sendingTracingData();
}

void ManagerCore::getDeviceIdThread() {
  schedule(kStartupRetryDelay, [](ManagerCore& self) {
    InnerQuorvanceData& state = *self.context_->state;
    if (state.read(StoredKey::deviceId) == state.defaultValue(StoredKey::deviceId)) {
      self.initializeDeviceId();
    }
  });
}

void ManagerCore::initializeDeviceId() {
  const OperationTrace trace(*context_->tracing, "initializeDeviceId");
  networkManager_->send(
      networkManager_->prepare(Service::getDeviceId), context_->collector->deviceIdBody(),
      [self = shared_from_this(), kept = trace.continuation()](const ResponceObject& response) {
        self->receiveDeviceId(response, kept);
      });
}

// A reply without an identifier, be it no object at all, changes nothing.
void ManagerCore::receiveDeviceId(const ResponceObject& response, TraceContinuation trace) {
  if (!response.succeeded()) {
    getDeviceIdThread();
    return;
  }
  appendResponse(trace, response);
  const std::string* deviceId = response.output ? deviceIdIn(*response.output) : nullptr;
  if (deviceId != nullptr && *deviceId != kNoDeviceId) acceptDeviceId(*deviceId);
}

// The same identifier again does all of it again.
void ManagerCore::acceptDeviceId(const std::string& deviceId) {
  configureDeviceId(deviceId);
  uploadStoredReports(ReportCategory::communicationError);
  uploadStoredReports(ReportCategory::crash);
  sendDataWithNewSession();
  if (isInDebugMode()) checkSensorForEmulator();
}

void ManagerCore::sendingTracingData() {
  schedule(kTraceUploadDelay, [](ManagerCore& self) { self.uploadTraces(); });
}

// One link of a loop that never stops. The entries become JSON off the main queue; what is added
// between the copy and the clear is lost with it, and that is accepted.
void ManagerCore::uploadTraces() {
  if (context_->tracing->isEmpty()) {
    sendingTracingData();
    return;
  }
  context_->platform.backgroundQueue->post(
      WorkLane::completions,
      [self = shared_from_this(), call = networkManager_->prepare(Service::tracingData)] {
        Json entries = self->context_->tracing->entries();
        if (entries.empty()) {  // another loop's upload has cleared the buffer since
          self->sendingTracingData();
          return;
        }
        Json body = makeObject(4);
        putMember(body, "tracingData", std::move(entries));
        self->networkManager_->send(call, std::move(body),
                                    {[self](const ResponceObject& response) {
                                       if (response.succeeded()) self->context_->tracing->clear();
                                       self->sendingTracingData();
                                     },
                                     [self] { self->sendingTracingData(); }});
      });
}

}  // namespace quorvance
