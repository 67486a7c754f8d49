#pragma once

#include <cstdint>
#include <memory>

#include "quorvance/qt/qt_view.h"
#include "quorvance/screen_listener.h"
#include "quorvance/screen_listener_type.h"

#pragma GCC visibility push(default)

namespace quorvance {
class QuorvanceManager;
}

namespace quorvance::qt {

/// Watches a widget or an item as a screen from its construction until its destruction, which sends
/// what was captured. An object that is destroyed earlier costs only the touches that follow.
///
/// Made, moved and destroyed on the application's thread. Made on another thread, without an
/// application object, without a manager or without a view it watches nothing.
class Screen {
 public:
  /// Watches nothing.
  Screen() noexcept = default;
  /// The manager is not kept. Throws std::bad_alloc alone.
  Screen(const std::shared_ptr<QuorvanceManager>& manager, ScreenListenerType type,
         std::int64_t actionId, QWidget* widget, ViewOptions options = {});
  Screen(const std::shared_ptr<QuorvanceManager>& manager, ScreenListenerType type,
         std::int64_t actionId, QQuickItem* item, ViewOptions options = {});
  /// Finishes it.
  ~Screen();
  Screen(Screen&& other) noexcept;
  /// Finishes what was watched here.
  Screen& operator=(Screen&& other) noexcept;

  /// Ends the screen before its destruction; a second call does nothing.
  void finish();
  /// Whether it watches: true from the construction to the end.
  bool isWatching() const { return listener_ != nullptr; }

 private:
  Screen(const std::shared_ptr<QuorvanceManager>& manager, ScreenListenerType type,
         std::int64_t actionId, std::shared_ptr<View> view);

  std::shared_ptr<QuorvanceScreenListener> listener_;
};

}  // namespace quorvance::qt

#pragma GCC visibility pop
