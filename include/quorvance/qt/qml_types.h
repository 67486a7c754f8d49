#pragma once

#include "quorvance/standard_library.h"

#include <memory>

#pragma GCC visibility push(default)

namespace quorvance {
class QuorvanceManager;
}

namespace quorvance::qt {

/// Registers the types of the QML module "Quorvance", version 1.0; before the first QML file is
/// loaded, on the application's thread. Another call replaces the manager.
///
/// The screens' manager is held weakly: after its end they watch nothing. Null stands for
/// QuorvanceManager::shared(), asked when a screen begins.
///
///     import Quorvance 1.0
///     Page {
///         RiskScreen { type: "LOGIN_FORM"; actionId: 7 }
///     }
///
/// A RiskScreen watches its parent item while that item is visible; each time that it or its window
/// is hidden, or one of them is destroyed, what was captured is sent. A window that was never shown
/// counts as shown, since it may be drawn into another one. Its properties:
///
/// - `type`: a screen's word, as ScreenListenerType has them; an unknown one is told as a warning,
///   and nothing is watched.
/// - `actionId`: a whole number up to 2^53; 0 by default.
/// - `view`: the item that is watched; by default the parent, of a window its content. Null watches
///   nothing.
/// - `active`: whether it watches while the item is visible; true by default.
/// - `mouseIsFinger`: takes the left button of a mouse as one finger; false by default.
/// - `watching`: whether it watches now; read only.
///
/// A change of `type`, `actionId`, `view` or `mouseIsFinger` ends the screen and begins another
/// one.
void registerQmlTypes(const std::shared_ptr<QuorvanceManager>& manager = nullptr);

}  // namespace quorvance::qt

#pragma GCC visibility pop
