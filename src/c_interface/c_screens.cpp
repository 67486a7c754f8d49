#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/forked_child.h"
#include "c_interface/c_calls.h"
#include "c_interface/host_motion.h"
#include "quorvance/c_screens.h"
#include "quorvance/quorvance_manager.h"

namespace quorvance {

/// A host's view, copied: the host's own may be gone after the call.
class CopiedView : public View {
 public:
  explicit CopiedView(const quorvance_view& root) { takeRoot(root); }
  CopiedView(const quorvance_view& view, int depth, std::size_t& room) { take(view, depth, room); }

  void takeRoot(const quorvance_view& root) {
    std::size_t room = QUORVANCE_VIEW_COUNT;
    take(root, 1, room);
  }

  /// With `room` for so many views below it.
  void take(const quorvance_view& view, int depth, std::size_t& room) {
    frame_ = {view.x, view.y, view.width, view.height};
    if (view.tag != 0) tag_ = view.tag;
    description_ = view.description == nullptr ? "" : view.description;
    const bool isLast = view.subviews == nullptr || depth >= QUORVANCE_VIEW_DEPTH;
    const std::size_t count = isLast ? 0 : std::min(view.subview_count, room);
    room -= count;
    if (subviews_.size() > count) subviews_.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
      if (i < subviews_.size()) {
        subviews_[i]->take(view.subviews[i], depth + 1, room);
      } else {
        subviews_.push_back(std::make_shared<CopiedView>(view.subviews[i], depth + 1, room));
      }
    }
  }

  ViewFrame frame() override { return frame_; }
  std::int64_t tag() override { return tag_; }
  void setTag(std::int64_t tag) override { tag_ = tag; }
  std::vector<std::shared_ptr<View>> subviews() override {
    return {subviews_.begin(), subviews_.end()};
  }
  std::string description() override { return description_; }
  void addGestureRecognizer(std::shared_ptr<QuorvanceGestureRecognizer> recognizer) override {
    recognizer_ = std::move(recognizer);
  }
  /// Null while the configuration asks for no touches.
  QuorvanceGestureRecognizer* recognizer() const { return recognizer_.get(); }

 private:
  ViewFrame frame_;
  std::int64_t tag_ = 0;
  std::string description_;
  std::vector<std::shared_ptr<CopiedView>> subviews_;
  std::shared_ptr<QuorvanceGestureRecognizer> recognizer_;
};

}  // namespace quorvance

/// What a host holds of a screen.
struct quorvance_screen {
  std::shared_ptr<quorvance::CopiedView> view;
  std::shared_ptr<quorvance::QuorvanceScreenListener> listener;
};

namespace quorvance {
namespace {

quorvance_screen* startScreen(ScreenListenerType type, std::int64_t actionId,
                              const quorvance_view& root) {
  auto screen = std::make_unique<quorvance_screen>();
  screen->view = std::make_shared<CopiedView>(root);
  screen->listener =
      QuorvanceManager::shared()->startNewScreenListener(type, actionId, screen->view);
  return screen.release();
}

void touch(QuorvanceGestureRecognizer& recognizer, GestureState state, GesturePoint place,
           const std::vector<Touch>& touches) {
  if (state == GestureState::began) recognizer.touchesBegan(touches);
  if (state == GestureState::changed) recognizer.touchesMoved(touches);
  if (state == GestureState::ended) recognizer.touchesEnded(touches);
  recognizer.setState(state, place);
}

/// A call of the screen's listener.
template <class Call>
int onListener(quorvance_screen* screen, Call call) noexcept {
  return answerOf([&]() -> int {
    if (screen == nullptr) return QUORVANCE_INVALID_ARGUMENT;
    call(*screen->listener);
    return QUORVANCE_OK;
  });
}

}  // namespace
}  // namespace quorvance

using quorvance::answerOf;
using quorvance::onListener;

extern "C" {

quorvance_screen* quorvance_screen_start(const char* type, int64_t action_id,
                                         const quorvance_view* root) {
  quorvance_screen* started = nullptr;
  answerOf([&]() -> int {
    const auto known = quorvance::valueOfWord<quorvance::ScreenListenerType>(type);
    if (!known || root == nullptr) return QUORVANCE_INVALID_ARGUMENT;
    started = quorvance::startScreen(*known, action_id, *root);
    return QUORVANCE_OK;
  });
  return started;
}

int quorvance_screen_set_views(quorvance_screen* screen, const quorvance_view* root) {
  return answerOf([=]() -> int {
    if (screen == nullptr || root == nullptr) return QUORVANCE_INVALID_ARGUMENT;
    screen->view->takeRoot(*root);
    return QUORVANCE_OK;
  });
}

int quorvance_screen_touch(quorvance_screen* screen, int32_t gesture, double x, double y,
                           const quorvance_touch* touches, size_t touch_count) {
  return answerOf([=]() -> int {
    const bool isKnown =
        gesture >= QUORVANCE_GESTURE_BEGAN && gesture <= QUORVANCE_GESTURE_CANCELLED;
    const bool hasTouches = touches != nullptr || touch_count == 0;
    if (screen == nullptr || !isKnown || !hasTouches) return QUORVANCE_INVALID_ARGUMENT;
    std::vector<quorvance::Touch> taken;
    for (std::size_t i = 0; i < touch_count; ++i) {
      taken.push_back({touches[i].force, touches[i].major_radius});
    }
    if (auto* const recognizer = screen->view->recognizer()) {
      quorvance::touch(*recognizer, static_cast<quorvance::GestureState>(gesture), {x, y}, taken);
    }
    return QUORVANCE_OK;
  });
}

int quorvance_screen_resume(quorvance_screen* screen) {
  return onListener(screen, [](auto& listener) { listener.resumeListen(); });
}

int quorvance_screen_pause(quorvance_screen* screen) {
  return onListener(screen, [](auto& listener) { listener.pauseListenToSensors(); });
}

int quorvance_screen_finish(quorvance_screen* screen) {
  return onListener(screen, [](auto& listener) { listener.finishScreenListener(); });
}

void quorvance_screen_release(quorvance_screen* screen) {
  if (!quorvance::isForkedChild()) delete screen;
}

int quorvance_motion_sample(int32_t sensor, double x, double y, double z) {
  return answerOf([=]() -> int {
    if (sensor < QUORVANCE_SENSOR_ACCELEROMETER || sensor > QUORVANCE_SENSOR_MAGNETOMETER) {
      return QUORVANCE_INVALID_ARGUMENT;
    }
    const bool isInstalled = quorvance::HostMotionSource::deliver(
        static_cast<quorvance::MotionSensor>(sensor), {x, y, z});
    return isInstalled ? QUORVANCE_OK : QUORVANCE_INVALID_ARGUMENT;
  });
}

}  // extern "C"
