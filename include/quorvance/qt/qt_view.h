#pragma once

#include <memory>

#include "quorvance/platform/view.h"

class QQuickItem;
class QWidget;

#pragma GCC visibility push(default)

namespace quorvance::qt {

struct ViewOptions {
  /// Takes the left button of a mouse as one finger without pressure and radius. A mouse event that
  /// the window system or Qt makes of a touch never counts.
  bool mouseIsFinger = false;
};

/// The property of a widget or an item that holds its tag, a whole number; 0 and absence mean that
/// there is none. An application may set it before the screen starts, in QML by declaring
/// `property int quorvanceTag: 7`; a screen listener sets it where there is none.
inline constexpr char kTagProperty[] = "quorvanceTag";

/// The view of a widget or an item, for QuorvanceManager::startNewScreenListener. Screen
/// (qt_screen.h) and RiskScreen (qml_types.h) do this for you.
///
/// Borrows what it shows: once that is destroyed, the view is empty and a touch on it cancelled.
/// Two views of one object share its property, but each keeps the tag that it has read once and
/// does not see a later change. Points are in the object's own coordinates: Qt's device-independent
/// pixels, in a scaled item the units of that item. The frame is in the parent's coordinates, of a
/// scaled or rotated item the rectangle around it; a window's own starts at (0, 0). Subviews come
/// as Qt stacks them, the lowest first, hidden ones too.
///
/// With a recognizer it is given the touches that begin on it or on anything in it, where nothing
/// else of the window that takes touches lies above (of widgets any other one, whether it takes
/// them or not), until all of those fingers are lifted: the place and the force are those of the
/// finger that has been down the longest, which is the first one of the event. The first finger put
/// down is `began`, the last one lifted `ended`, everything else that happens meanwhile `changed`.
/// The radius is half of the longer diameter in the window's pixels, in a scaled item too. The
/// force is Qt's pressure as it stands, 0 to 1; 0 where the panel tells none and of a finger that
/// is lifted. Qt's 1 is the most that the panel can tell and not an average touch: forces of Qt's
/// do not compare with those of other toolkits.
///
/// Touches are seen before the application handles them and never taken from it. Not seen are those
/// that an event filter of the application's own on the application object consumes, and those of a
/// pen. A press that is sent to a window again, with its time, as items with a delay do, counts
/// once. Where a view has
/// several native windows inside of it, the panel's first finger on one of them, or its hiding,
/// cancels the touch in the others.
///
/// Application's thread only. On another thread and before there is an application object the view
/// is empty and takes no recognizer. Null for null. Throws std::bad_alloc alone.
std::shared_ptr<View> viewOf(QWidget* widget, ViewOptions options = {});
std::shared_ptr<View> viewOf(QQuickItem* item, ViewOptions options = {});

}  // namespace quorvance::qt

#pragma GCC visibility pop
