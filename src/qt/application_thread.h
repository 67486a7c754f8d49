#pragma once

// The component for applications of Qt's: what adapts Qt's views, touches, event loop and sensors
// to the seam. It sees nothing but the library's public headers. Start reading at
// quorvance/qt/qt_platform.h, then touch_router.h.

#include <QCoreApplication>
#include <QThread>

namespace quorvance::qt {

/// False, too, where there is no application object.
inline bool isOnApplicationThread() {
  const QCoreApplication* const application = QCoreApplication::instance();
  return application != nullptr && application->thread() == QThread::currentThread();
}

}  // namespace quorvance::qt
