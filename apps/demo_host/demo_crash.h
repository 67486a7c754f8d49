// Ends the demo on purpose, so that its crash report can be seen.
#pragma once

#include <chrono>

namespace demo_host {

// How the host crashes.
enum class CrashKind { segv, abort, exception };

inline constexpr std::chrono::seconds kCrashCaptureTime{10};

// Knows when the library has switched its crash capture on: made before that can be.
class CrashCapture {
 public:
  CrashCapture();
  // False when it did not in time.
  bool waitUntilOn() const;

 private:
  bool isOn() const;

  void (*handlerBefore_)(int);
};

// On a thread of its own, where nothing catches an exception.
[[noreturn]] void crashOnPurpose(CrashKind kind);

}  // namespace demo_host
