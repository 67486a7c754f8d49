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
  // Qt is not asked for the thread before: it takes the first one that asks for the main one.
  if (application == nullptr) return false;
  // The same for as long as a thread runs; asking for it is dear.
  static thread_local const QThread* const current = QThread::currentThread();
  return application->thread() == current;
}

}  // namespace quorvance::qt
