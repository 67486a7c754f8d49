#include "quorvance/platform/face_detection.h"

#include <nlohmann/json.hpp>

namespace quorvance {

FaceDetection::~FaceDetection() = default;

bool FaceDetection::hasScannedImage() { return false; }

bool FaceDetection::ranFaceVerificationWithUserIdSuccessfuly() { return false; }

bool FaceDetection::isVerifyProcessRunning() { return false; }

void FaceDetection::startFaceCapture() {}

std::optional<std::string> FaceDetection::scannedImageJpeg(double /*quality*/) {
  return std::nullopt;
}

Json FaceDetection::imageRequestBody(const BioImageData& /*image*/) { return nullptr; }

void FaceDetection::receiveImageReply(const Json& /*reply*/) {}

}  // namespace quorvance
