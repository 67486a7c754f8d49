#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quorvance/platform/authorization.h"
#include "quorvance/platform/device_facts.h"
#include "quorvance/platform/environment.h"
#include "quorvance/platform/face_detection.h"
#include "quorvance/platform/identity.h"
#include "quorvance/platform/reachability.h"

namespace quorvance {

// Device facts that a test sets before they are read.

class FakeIdentity : public IdentitySource {
 public:
  std::optional<std::string> vendor = "0F1E2D3C-4B5A-4978-8796-A5B4C3D2E1F0";
  std::optional<std::string> advertising;
  /// How often the vendor's was asked for.
  std::atomic<int> asked = 0;

  std::optional<std::string> vendorIdentifier() override {
    ++asked;
    return vendor;
  }
  std::optional<std::string> advertisingIdentifier() override { return advertising; }
};

class FakeEnvironment : public EnvironmentSource {
 public:
  std::map<std::string, std::string, std::less<>> variables;
  std::string machineName = "x86_64";

  std::optional<std::string> variable(std::string_view name) override {
    const auto found = variables.find(name);
    return found == variables.end() ? std::nullopt : std::optional(found->second);
  }
  std::string machine() override { return machineName; }
};

template <class Facts>
class FakeFacts : public FactSource<Facts> {
 public:
  Facts facts;
  Facts read() override { return facts; }
};

/// A battery that is read only while it is monitored.
class FakePower : public PowerSource {
 public:
  /// Absent: there is no switch.
  std::optional<bool> isOn = false;
  BatteryReading battery;

  std::optional<bool> isMonitoringEnabled() override { return isOn; }
  void setMonitoringEnabled(bool on) override { isOn = on; }
  BatteryReading read() override { return isOn.value_or(true) ? battery : BatteryReading{}; }
};

class FakeReachability : public ReachabilityMonitor {
 public:
  NetworkKind now = NetworkKind::unknown;

  NetworkKind kind() override { return now; }
  std::shared_ptr<void> subscribe(NetworkListener listener) override {
    auto subscription = std::make_shared<NetworkListener>(std::move(listener));
    listeners_.push_back(subscription);
    return subscription;
  }
  void change(NetworkKind kind) {
    now = kind;
    for (const auto& listener : listeners_) {
      if (const auto alive = listener.lock()) (*alive)(kind);
    }
  }
  std::size_t listeners() const { return listeners_.size(); }

 private:
  std::vector<std::weak_ptr<NetworkListener>> listeners_;
};

class FakeAuthorization : public AuthorizationSource {
 public:
  bool isLocationOn = true;
  std::map<AuthorizationSubject, AuthorizationStatus> answers;
  int questions = 0;

  bool locationServicesEnabled() override { return isLocationOn; }
  AuthorizationStatus status(AuthorizationSubject subject) override {
    ++questions;
    const auto found = answers.find(subject);
    return found == answers.end() ? AuthorizationStatus::notDetermined : found->second;
  }
};

class FakeLocation : public LocationSource {
 public:
  std::optional<LocationFix> fix;
  std::optional<LocationFix> lastFix() override { return fix; }
};

class FakeFaceDetection : public FaceDetection {
 public:
  int resets = 0;
  bool hasImage = false;
  bool isVerified = false;
  bool isVerifying = false;
  int captures = 0;
  /// Absent: the image is gone by the time that it is asked for.
  std::optional<std::string> jpeg = "jpeg";
  std::optional<double> quality;
  /// What came back, as text.
  std::vector<std::string> replies;

  void reset() override { ++resets; }
  bool hasScannedImage() override { return hasImage; }
  bool ranFaceVerificationWithUserIdSuccessfuly() override { return isVerified; }
  bool isVerifyProcessRunning() override { return isVerifying; }
  void startFaceCapture() override { ++captures; }
  std::optional<std::string> scannedImageJpeg(double asked) override {
    quality = asked;
    return jpeg;
  }
  Json imageRequestBody(const BioImageData& image) override {
    Json body = Json::object();
    body["face"] = image.userId + " " + image.sessionId.value_or("nil") + " " + image.image;
    return body;
  }
  void receiveImageReply(const Json& reply) override { replies.push_back(reply.dump()); }
};

}  // namespace quorvance
