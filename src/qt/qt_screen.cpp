#include "quorvance/qt/qt_screen.h"

#include <utility>

#include "qt/application_thread.h"
#include "quorvance/quorvance_manager.h"

namespace quorvance::qt {

Screen::Screen(const std::shared_ptr<QuorvanceManager>& manager, ScreenListenerType type,
               std::int64_t actionId, std::shared_ptr<View> view) {
  if (!manager || !view || !isOnApplicationThread()) return;
  listener_ = manager->startNewScreenListener(type, actionId, std::move(view));
}

Screen::Screen(const std::shared_ptr<QuorvanceManager>& manager, ScreenListenerType type,
               std::int64_t actionId, QWidget* widget, ViewOptions options)
    : Screen(manager, type, actionId, viewOf(widget, options)) {}

Screen::Screen(const std::shared_ptr<QuorvanceManager>& manager, ScreenListenerType type,
               std::int64_t actionId, QQuickItem* item, ViewOptions options)
    : Screen(manager, type, actionId, viewOf(item, options)) {}

Screen::~Screen() { finish(); }

Screen::Screen(Screen&& other) noexcept : listener_(std::exchange(other.listener_, nullptr)) {}

Screen& Screen::operator=(Screen&& other) noexcept {
  if (this == &other) return *this;
  finish();
  listener_ = std::exchange(other.listener_, nullptr);
  return *this;
}

void Screen::finish() {
  if (const auto ended = std::exchange(listener_, nullptr)) ended->finishScreenListener();
}

}  // namespace quorvance::qt
