#pragma once

#include <memory>
#include <mutex>

#include "biometrics/screen_listener_owner.h"
#include "quorvance/platform/authorization.h"
#include "quorvance/platform/face_detection.h"
#include "quorvance/platform/queues.h"
#include "state/inner_quorvance_data.h"

namespace quorvance {

/// Gives the host's face verification its chance when a screen listener is made. Once per context;
/// any thread.
///
/// An upload is taken up on the host's thread, encoded and put together in the background, and
/// sent; until its reply has come no other one of that user's session is begun.
class FaceVerification : public std::enable_shared_from_this<FaceVerification> {
 public:
  /// Without a controller or without a source of permissions nothing ever happens.
  FaceVerification(std::shared_ptr<FaceDetectionBase> controller,
                   std::shared_ptr<AuthorizationSource> authorization,
                   std::shared_ptr<InnerQuorvanceData> state,
                   std::shared_ptr<BackgroundQueue> backgroundQueue);

  /// Uploads a scanned image, or starts face capture, as the configuration, the camera's permission
  /// and the controller's state say. Returns at once.
  void runFor(std::shared_ptr<ScreenListenerOwner> owner);

 private:
  /// One image on its way. Its end, wherever it comes, lets the next one of that session begin.
  struct Upload;

  bool isWanted() const;
  void beginUpload(std::shared_ptr<ScreenListenerOwner> owner);
  /// False while another one of the same user's session is on its way.
  bool mayBegin(const std::shared_ptr<Upload>& upload);
  void send(const std::shared_ptr<Upload>& upload);
  void receive(const Upload& upload, const Json& reply);

  const std::shared_ptr<FaceDetectionBase> controller_;
  const std::shared_ptr<AuthorizationSource> authorization_;
  const std::shared_ptr<InnerQuorvanceData> state_;
  const std::shared_ptr<BackgroundQueue> backgroundQueue_;
  std::mutex mutex_;
  std::weak_ptr<const Upload> latest_;
};

}  // namespace quorvance
