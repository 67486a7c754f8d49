#include <chrono>
#include <utility>

#include "core/manager_core.h"
#include "core/response_text.h"
#include "diagnostics/activity_map.h"
#include "diagnostics/crash_report.h"

namespace quorvance {
namespace {

constexpr std::chrono::milliseconds kEmulatorProbeDelay{500};
constexpr std::chrono::milliseconds kEmulatorProbeTime{500};

}  // namespace

std::shared_ptr<QuorvanceScreenListener> ManagerCore::startNewScreenListener(
    ScreenListenerType type, std::int64_t actionId, std::shared_ptr<View> view) {
  announceScreen(type, actionId);
  return context_->screens->makeListener(type, actionId, std::move(view), shared_from_this());
}

PreparedCall ManagerCore::prepareCall(Service service) { return networkManager_->prepare(service); }

void ManagerCore::sendCall(const PreparedCall& call, Json body, ReplyHandler handler) {
  networkManager_->send(call, std::move(body), std::move(handler));
}

void ManagerCore::sendImage(Json body, ReplyHandler handler) {
  networkManager_->sendImage(std::move(body), std::move(handler));
}

// All that is traced of a new listener: its own beginning comes after the end of the entry.
void ManagerCore::announceScreen(ScreenListenerType type, std::int64_t actionId) {
  const OperationTrace trace(*context_->tracing, "startNewScreenListener");
  const std::int64_t now = context_->state->now();
  const auto config = context_->state->sdkConfig();
  if (config->watches(type, actionId)) {
    networkManager_->send(networkManager_->prepare(Service::thirdPartyCacheEnrichment),
                          makeObject(3), &printResponse);
  }
  if (config->activityMap.value_or(false) && flags_.isStartApp.exchange(false)) {
    storeStartApp(now);
  }
}

// How long the application took to reach its first watched screen.
void ManagerCore::storeStartApp(std::int64_t now) {
  InnerQuorvanceData& state = *context_->state;
  const HostApplication& host = context_->platform.hostApplication;
  ActivityMap record;
  if (!host.identifier.empty()) record.appID = host.identifier;
  record.appVer = host.shortVersion;
  record.deviceId = state.readText(StoredKey::deviceId);
  record.userId = state.readText(StoredKey::userId);
  record.sessionId = state.readText(StoredKey::sessionId);
  record.timestampStart = startAppTime_;
  record.timestampEnd = now;
  context_->reports->storeReport(record.startAppJson(), ReportCategory::activity);
}

void ManagerCore::checkSensorForEmulator() {
  const OperationTrace trace(*context_->tracing, "checkSensorForEmulator");
  context_->platform.mainQueue->postAfter(kEmulatorProbeDelay,
                                          [self = shared_from_this()] { self->probeSensors(); });
}

// What the sensors said is dropped; whether they said anything is kept.
void ManagerCore::probeSensors() {
  DeviceDataManager& device = *context_->deviceData;
  device.setSensorCheck({.isListening = true, .hasSensorsData = std::nullopt});
  context_->platform.mainQueue->postAfter(
      kEmulatorProbeTime,
      [&device, self = shared_from_this(), probe = context_->screens->startProbe()] {
        device.setSensorCheck({.isListening = false, .hasSensorsData = probe->stop()});
      });
}

void ManagerCore::onRequestAccess(MobilePermission type) {
  context_->deviceData->recordAsked(type);
}

bool ManagerCore::ifAuthorized(MobilePermission type) {
  return context_->deviceData->isAuthorized(type);
}

void ManagerCore::setPendingUserData(Json userData) {
  context_->deviceData->setPendingUserData(std::move(userData));
}

void ManagerCore::crashEyeDidCatchCrash(const CrashModel& crash) {
  if (crash.isStored) return;
  // The process may be gone a moment later: the report is on the disk when this returns.
  context_->reportStore->storeReport(crashReport(crash, context_->state->now()).getJson(),
                                     ReportCategory::crash);
}

}  // namespace quorvance
