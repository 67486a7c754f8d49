#pragma once

#pragma GCC visibility push(default)

namespace quorvance {

/// The host's face-verification controller.
class FaceDetection {
 public:
  virtual ~FaceDetection() = default;
  /// Drops the current capture and clears both in-progress flags. Called from any thread at logout;
  /// returns at once.
  virtual void reset() = 0;
};

}  // namespace quorvance

#pragma GCC visibility pop
