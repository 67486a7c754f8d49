#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "quorvance/json_conversion.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// A face image on its way to the server.
struct BioImageData {
  std::string userId;
  /// The session that ran when the image was taken up; absent when there was none.
  std::optional<std::string> sessionId;
  /// JPEG as base64 (RFC 4648, section 4), a line break (CR LF) after every 64 characters.
  std::string image;
};

/// What the library asks, without a type of the JSON library. A host implements FaceDetection.
class FaceDetectionBase {
 public:
  virtual ~FaceDetectionBase();
  /// Drops the current capture and clears both in-progress flags. Called from any thread at logout;
  /// returns at once.
  virtual void reset() = 0;

  // Asked on the host's main thread while a screen listener is made; each answers from memory and
  // returns at once.
  virtual bool hasScannedImage();
  virtual bool ranFaceVerificationWithUserIdSuccessfuly();
  virtual bool isVerifyProcessRunning();
  /// Begins to capture a face.
  virtual void startFaceCapture();

  // Called on background threads of the library, one upload after another; may take their time.

  /// The scanned image encoded as JPEG; `quality` is 100.0. Absent when there is none any more:
  /// then nothing is sent.
  virtual std::optional<std::string> scannedImageJpeg(double quality);
  /// Gives one value, see FaceDetection::imageRequestBody; null when it gives none.
  virtual void writeImageRequestBody(const BioImageData& image, JsonSink& sink) = 0;
  /// The reply is lent for the call, see FaceDetection::receiveImageReply.
  virtual void readImageReply(const JsonSource& reply) = 0;
};

}  // namespace quorvance

#pragma GCC visibility pop

namespace quorvance {
inline namespace QUORVANCE_JSON_NAMESPACE {

/// The host's face-verification controller. Every screen listener that is made while the
/// configuration asks for face verification and the camera is authorised asks it: a scanned image
/// that was not verified yet is uploaded, one upload at a time of one user's session; without one,
/// face capture starts.
///
/// A host that only implements reset() takes no part. Throws nothing.
class FaceDetection : public FaceDetectionBase {
 public:
  /// The body of the upload, a JSON object: it is sent as it stands, with "version" added. Anything
  /// else sends nothing. On the threads of scannedImageJpeg.
  virtual Json imageRequestBody(const BioImageData& /*image*/) { return nullptr; }
  /// The server's reply, an object; null when the call failed or the reply is none. Not called when
  /// the user or the session has changed since: the reply belongs to somebody who has gone. On the
  /// threads of scannedImageJpeg.
  virtual void receiveImageReply(const Json& /*reply*/) {}

  void writeImageRequestBody(const BioImageData& image, JsonSink& sink) override {
    giveJson(sink, imageRequestBody(image));
  }
  void readImageReply(const JsonSource& reply) override {
    receiveImageReply(*JsonReader<Json>(reply));
  }
};

}  // namespace QUORVANCE_JSON_NAMESPACE
}  // namespace quorvance
