#include "biometrics/screen_listener_maker.h"

#include <utility>

#include "biometrics/capturing_screen_listener.h"

namespace quorvance {
namespace {

class InertScreenListener : public QuorvanceScreenListener {
 public:
  void resumeListen() override {}
  void pauseListenToSensors() override {}
  void finishScreenListener() override {}
  void handleTouches(const QuorvanceGestureRecognizer& /*recognizer*/) override {}
};

}  // namespace

SensorProbe::SensorProbe(std::shared_ptr<const ScreenServices> services)
    : capture_(std::move(services)) {}

bool SensorProbe::stop() {
  capture_.pauseListenToSensors();
  return capture_.recording().counts().motionLines > 0;
}

ScreenListenerMaker::ScreenListenerMaker(ScreenServices services)
    : services_(std::make_shared<const ScreenServices>(std::move(services))) {}

std::shared_ptr<QuorvanceScreenListener> ScreenListenerMaker::makeListener(
    ScreenListenerType type, std::int64_t actionId, std::shared_ptr<View> view,
    std::shared_ptr<ScreenListenerOwner> owner) {
  return CapturingScreenListener::make(services_, std::move(owner), type, actionId,
                                       std::move(view));
}

std::shared_ptr<SensorProbe> ScreenListenerMaker::startProbe() {
  return std::make_shared<SensorProbe>(services_);
}

std::shared_ptr<QuorvanceScreenListener> makeInertListener() {
  return std::make_shared<InertScreenListener>();
}

}  // namespace quorvance
