#include "biometrics/face_verification.h"

#include <utility>

#include "base/base64.h"
#include "base/debug.h"
#include "base/fatal.h"
#include "base/json_exchange.h"
#include "base/out_of_memory.h"

namespace quorvance {
namespace {

constexpr double kJpegQuality = 100.0;

}  // namespace

struct FaceVerification::Upload {
  Upload(std::shared_ptr<FaceVerification> verification,
         std::shared_ptr<ScreenListenerOwner> listenerOwner)
      : flow(std::move(verification)), owner(std::move(listenerOwner)) {}

  const std::shared_ptr<FaceVerification> flow;
  const std::shared_ptr<ScreenListenerOwner> owner;
  BioImageData image;
  /// Tells the controller that no answer came. Made beforehand: an answer may be lost for want of
  /// memory.
  std::shared_ptr<PreparedTask> unanswered;
};

FaceVerification::FaceVerification(std::shared_ptr<FaceDetectionBase> controller,
                                   std::shared_ptr<AuthorizationSource> authorization,
                                   std::shared_ptr<InnerQuorvanceData> state,
                                   std::shared_ptr<BackgroundQueue> backgroundQueue)
    : controller_(std::move(controller)),
      authorization_(std::move(authorization)),
      state_(std::move(state)),
      backgroundQueue_(std::move(backgroundQueue)) {}

bool FaceVerification::isWanted() const {
  if (!controller_ || !authorization_) return false;
  return state_->sdkConfig()->faceVerificationDelay.value_or(-1) >= 0 &&
         authorization_->status(AuthorizationSubject::camera) == AuthorizationStatus::authorized;
}

void FaceVerification::runFor(std::shared_ptr<ScreenListenerOwner> owner) {
  if (!isWanted() || controller_->isVerifyProcessRunning()) return;
  if (!controller_->hasScannedImage()) {
    controller_->startFaceCapture();
  } else if (!controller_->ranFaceVerificationWithUserIdSuccessfuly()) {
    beginUpload(std::move(owner));
  }
}

void FaceVerification::beginUpload(std::shared_ptr<ScreenListenerOwner> owner) {
  auto user = state_->readText(StoredKey::userId);
  if (!user) fatalError("the stored user cannot be read");
  if (*user == kUnknownUser) return;
  auto upload = std::make_shared<Upload>(shared_from_this(), std::move(owner));
  upload->image.userId = std::move(*user);
  upload->image.sessionId = state_->readText(StoredKey::sessionId);
  if (!mayBegin(upload)) return;
  upload->unanswered = backgroundQueue_->prepare(
      WorkLane::completions,
      [raw = upload.get()](const auto& /*owner*/) { raw->flow->receive(*raw, Json()); });
  if (!upload->unanswered) return;
  backgroundQueue_->post(WorkLane::images, withinMemory([upload] { upload->flow->send(upload); }));
}

bool FaceVerification::mayBegin(const std::shared_ptr<Upload>& upload) {
  const std::lock_guard lock(mutex_);
  const std::shared_ptr<const Upload> other = latest_.lock();
  const BioImageData& image = upload->image;
  if (other && other->image.userId == image.userId && other->image.sessionId == image.sessionId) {
    return false;
  }
  latest_ = upload;
  return true;
}

void FaceVerification::send(const std::shared_ptr<Upload>& upload) {
  const auto jpeg = controller_->scannedImageJpeg(kJpegQuality);
  if (!jpeg) return;
  upload->image.image = base64InLines(*jpeg);
  Json body = writtenJson<Json>(
      [&](JsonSink& sink) { controller_->writeImageRequestBody(upload->image, sink); });
  const JsonDiscarder discarder(body);
  upload->image.image = std::string();
  if (!body.is_object()) return;
  debugPrint("sendImageWithUserId");
  upload->owner->sendImage(std::move(body), ReplyHandler(
                                                [upload](const ResponceObject& response) {
                                                  const Json none;
                                                  upload->flow->receive(
                                                      *upload,
                                                      response.output ? *response.output : none);
                                                },
                                                [upload] { upload->unanswered->start(upload); }));
}

// A logout replaces the session, also when the same user signs in again.
void FaceVerification::receive(const Upload& upload, const Json& reply) {
  const BioImageData& image = upload.image;
  if (state_->readText(StoredKey::userId) == image.userId &&
      state_->readText(StoredKey::sessionId) == image.sessionId) {
    controller_->readImageReply(jsonSource(reply));
  }
}

}  // namespace quorvance
