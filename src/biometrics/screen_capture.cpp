#include "biometrics/screen_capture.h"

#include <utility>

#include "base/debug.h"
#include "base/fatal.h"
#include "base/out_of_memory.h"
#include "diagnostics/activity_map.h"
#include "diagnostics/operation_trace.h"

namespace quorvance {
namespace {

// The calls' names are constants.
ReplyHandler printingHandler(std::string_view call) {
  return [call](const ResponceObject& response) {
    if (!isInDebugMode()) return;
    debugPrint(std::string(call) + (response.succeeded() ? ": true" : ": false"));
  };
}

Json screenEventBody(ScreenRecording::Labels labels, std::int64_t now, std::string_view action) {
  Json event = makeObject(4);
  const JsonDiscarder eventDiscarder(event);
  putMember(event, "screenListenerType", ScreenListenerTypeToString::toString(labels.type));
  putMember(event, "screenId", labels.actionId);
  putMember(event, "timestamp", now);
  putMember(event, "action", action);
  // Room for "keys", "session" and "version".
  Json body = makeObject(4);
  JsonDiscarder discarder(body);
  putMember(body, "screenListenerEvent", std::move(event));
  discarder.keep();
  return body;
}

// What stands beside the rows, as of the moment of finishing.
struct UploadTexts {
  Session session;
  std::optional<std::string> userId;
  std::optional<std::string> deviceId;
  std::optional<std::string> uuid;
};

Json uploadBody(const std::optional<BioSensorEventData>& rows, const UploadTexts& texts) {
  Json body = makeObject(7);
  JsonDiscarder discarder(body);
  if (rows) putMember(body, "bio_sensor_event_data", rows->getJson());
  putMember(body, "session", texts.session.getJson());
  if (texts.userId) putMember(body, "userId", *texts.userId);
  if (texts.deviceId) putMember(body, "deviceId", *texts.deviceId);
  if (texts.uuid) putMember(body, "uuid", *texts.uuid);
  discarder.keep();
  return body;
}

std::string listText(const std::vector<SensorEvent>& events) {
  std::string text = "[";
  for (const SensorEvent& event : events) text += (text.size() > 1 ? "," : "") + event.text();
  return text + "]";
}

}  // namespace

ScreenCapture::ScreenCapture(std::shared_ptr<const ScreenServices> services,
                             std::shared_ptr<ScreenListenerOwner> owner, ScreenListenerType type,
                             std::int64_t actionId)
    : services_(std::move(services)),
      owner_(std::move(owner)),
      labels_{type, actionId},
      userIdStart_(services_->state->readText(StoredKey::userId)),
      sessionId_(services_->state->now()),
      uptime_(services_->state->now()),
      sessionIdStart_(services_->state->readText(StoredKey::sessionId)),
      erasures_(services_->state->erasures()),
      sampling_(services_->motion, services_->state, recording_) {}

ScreenCapture::ScreenCapture(std::shared_ptr<const ScreenServices> services)
    : services_(std::move(services)),
      labels_{ScreenListenerType::EMULATOR_CHECK, 0},
      sampling_(services_->motion, services_->state, recording_) {
  sampling_.start();
}

void ScreenCapture::sendScreenEvent(std::string_view action) {
  if (services_->state->sdkConfig()->appRunMode != AppRunMode::DEVELOPMENT) return;
  Json body = screenEventBody(labels_, services_->state->now(), action);
  const JsonDiscarder discarder(body);
  owner_->sendCall(owner_->prepareCall(Service::sendScreenListenerEvent), std::move(body),
                   printingHandler("sendScreenListenerEvent"));
}

void ScreenCapture::pauseListenToSensors() {
  sampling_.stop();
  if (isInDebugMode()) debugPrint(listText(recording_->listSensor()));
  recording_->takeSnapshot();
}

// The entry is closed before the work can begin, on whatever thread it runs.
void ScreenCapture::finishScreenListener() {
  { const OperationTrace trace(*services_->tracing, "finishScreenListener"); }
  if (!owner_->isAccepting()) return pauseListenToSensors();
  services_->mainQueue->post(
      withinMemory([self = shared_from_this(), pending = services_->ledger->pending()->begin()] {
        self->finish();
      }));
}

// Without memory for one step the others are taken all the same: sensors must not stay on.
void ScreenCapture::finish() {
  hasMemoryFor([&] { sendScreenEvent("END"); });
  hasMemoryFor([&] { pauseListenToSensors(); });
  // Of a user whose data has been erased since nothing is kept and nothing sent.
  if (services_->state->erasures() != erasures_) return;
  const std::int64_t end = services_->state->now();
  const auto activityMap = services_->state->sdkConfig()->activityMap;
  if (!activityMap) fatalError("the configuration does not say whether activities are recorded");
  if (*activityMap) hasMemoryFor([&] { storeActivity(end); });
  if (recording_->counts().isEmpty()) {
    debugPrint("file not saved, with empty eventList & sensorsData");
    return;
  }
  upload(end);
}

void ScreenCapture::storeActivity(std::int64_t end) {
  ActivityMap record;
  const HostApplication& host = services_->hostApplication;
  if (!host.identifier.empty()) record.appID = host.identifier;
  record.appVer = host.shortVersion;
  record.deviceId = services_->state->readText(StoredKey::deviceId);
  record.userId = userIdStart_;
  record.sessionId = sessionIdStart_;
  record.screenType = labels_.type;
  record.screenId = std::to_string(labels_.actionId);
  record.timestampStart = uptime_;
  record.timestampEnd = end;
  services_->reports->storeReport(record.getJson(), ReportCategory::activity);
}

// A failed upload is final. Everything in the body is of now; the rows, which may be many, become
// JSON off the main queue.
void ScreenCapture::upload(std::int64_t finishedAt) {
  InnerQuorvanceData& state = *services_->state;
  const std::int64_t now = state.now();
  if (isInDebugMode()) debugPrint("Delta time Collect Bio: " + std::to_string(now - finishedAt));
  auto rows = std::make_shared<const std::optional<BioSensorEventData>>(
      recording_->takeSnapshotRows(labels_));
  UploadTexts texts{state.currentSession(), owner_->userId(), state.readText(StoredKey::deviceId),
                    state.vendorIdentifier()};
  PreparedCall call = owner_->prepareCall(Service::biometricData);
  services_->backgroundQueue->post(
      WorkLane::completions, withinMemory([owner = owner_, rows = std::move(rows),
                                           texts = std::move(texts), call = std::move(call)] {
        owner->sendCall(call, uploadBody(*rows, texts), printingHandler("BiometricData"));
      }));
}

}  // namespace quorvance
