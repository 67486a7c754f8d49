#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "biometrics/face_verification.h"
#include "biometrics/motion_sampling.h"
#include "biometrics/screen_listener_owner.h"
#include "biometrics/screen_recording.h"
#include "diagnostics/report_keeper.h"
#include "diagnostics/tracing_manager.h"
#include "quorvance/platform/host_application.h"
#include "quorvance/platform/motion.h"
#include "quorvance/platform/queues.h"
#include "quorvance/screen_listener_type.h"
#include "state/inner_quorvance_data.h"

namespace quorvance {

/// What screen listeners use of the context that they belong to.
struct ScreenServices {
  std::shared_ptr<InnerQuorvanceData> state;
  std::shared_ptr<TracingManager> tracing;
  std::shared_ptr<ReportKeeper> reports;
  HostApplication hostApplication;
  std::shared_ptr<MainQueue> mainQueue;
  std::shared_ptr<BackgroundQueue> backgroundQueue;
  /// Null: no sensor is ever sampled.
  std::shared_ptr<MotionSource> motion;
  std::shared_ptr<FaceVerification> faceVerification;
  std::shared_ptr<DeliveryLedger> ledger;
};

/// A screen's listener without the host's views: sampling, the recording, and what is sent of it.
/// Any thread. Work that is queued holds it; the views stay with the listener, so that they are
/// let go of on the host's thread.
class ScreenCapture : public std::enable_shared_from_this<ScreenCapture> {
 public:
  /// Of a screen that begins now.
  ScreenCapture(std::shared_ptr<const ScreenServices> services,
                std::shared_ptr<ScreenListenerOwner> owner, ScreenListenerType type,
                std::int64_t actionId);
  /// The plain listener: of no screen, no user and no time; it only samples, from now on.
  explicit ScreenCapture(std::shared_ptr<const ScreenServices> services);

  /// Sends "START" or "END" in the development run mode.
  void sendScreenEvent(std::string_view action);
  void resumeListen() { sampling_.start(); }
  /// Stops the sensors and nothing else.
  void stopSensors() { sampling_.stop(); }
  void pauseListenToSensors();
  void finishScreenListener();

  ScreenRecording& recording() { return *recording_; }

 private:
  void finish();
  void storeActivity(std::int64_t end);
  void upload(std::int64_t finishedAt);

  const std::shared_ptr<const ScreenServices> services_;
  /// Null for the plain listener, which sends nothing.
  const std::shared_ptr<ScreenListenerOwner> owner_;
  const ScreenRecording::Labels labels_;
  // Of the moment of creation, read in this order.
  const std::optional<std::string> userIdStart_;
  const std::int64_t sessionId_ = 0;
  const std::int64_t uptime_ = 0;
  const std::optional<std::string> sessionIdStart_;
  const std::uint64_t erasures_ = 0;
  const std::shared_ptr<ScreenRecording> recording_ = std::make_shared<ScreenRecording>();
  MotionSampling sampling_;
};

}  // namespace quorvance
