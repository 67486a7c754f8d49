#include "biometrics/screen_listener_maker.h"

namespace quorvance {
namespace {

class InertScreenListener : public QuorvanceScreenListener {
 public:
  void resumeListen() override {}
  void pauseListenToSensors() override {}
  void finishScreenListener() override {}
};

}  // namespace

std::shared_ptr<QuorvanceScreenListener> InertScreenListenerMaker::makeListener(
    ScreenListenerType /*type*/, std::int64_t /*actionId*/, std::shared_ptr<View> /*view*/) {
  return std::make_shared<InertScreenListener>();
}

void InertScreenListenerMaker::probeSensors() {}

}  // namespace quorvance
