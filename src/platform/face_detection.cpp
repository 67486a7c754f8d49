#include "quorvance/platform/face_detection.h"

namespace quorvance {

FaceDetectionBase::~FaceDetectionBase() = default;

bool FaceDetectionBase::hasScannedImage() { return false; }

bool FaceDetectionBase::ranFaceVerificationWithUserIdSuccessfuly() { return false; }

bool FaceDetectionBase::isVerifyProcessRunning() { return false; }

void FaceDetectionBase::startFaceCapture() {}

std::optional<std::string> FaceDetectionBase::scannedImageJpeg(double /*quality*/) {
  return std::nullopt;
}

}  // namespace quorvance
