#pragma once

// The library in an application of Qt's: everything of the component Quorvance::qt, and all that
// the library has. Start reading at qt_platform.h, then qt_screen.h or qml_types.h, then
// qt_verdict.h.

#include "quorvance/quorvance.h"

#include "quorvance/qt/event_loop_queue.h"
#include "quorvance/qt/qml_types.h"
#include "quorvance/qt/qt_motion.h"
#include "quorvance/qt/qt_platform.h"
#include "quorvance/qt/qt_screen.h"
#include "quorvance/qt/qt_verdict.h"
#include "quorvance/qt/qt_view.h"
