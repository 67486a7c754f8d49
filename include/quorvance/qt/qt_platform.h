#pragma once

#include "quorvance/platform/linux_platform.h"
#include "quorvance/platform/platform.h"

#pragma GCC visibility push(default)

namespace quorvance::qt {

/// The Linux platform of an application of Qt's, for QuorvanceManager::usePlatform or a manager of
/// its own. What the options name stands; of the rest,
///
/// - the main queue is the application's event loop (EventLoopQueue),
/// - the host application is the application object's: its identifier is desktopFileName, else
///   organizationDomain reversed and applicationName ("com.bank.app"), else applicationName; the
///   version is applicationVersion. The display name is not used, since it is translated and the
///   data folder is named by the identifier,
/// - the main screen is the primary QScreen, in device-independent and in native pixels, as it
///   stands when the application last ran its event loop,
/// - motion comes of Qt Sensors where Qt has an accelerometer (makeMotionSource), else of the
///   kernel.
///
/// To be called on the application's thread, after the application object was made and its names
/// were set, before the first use of the library. Elsewhere, and without an application object, it
/// is makeLinuxPlatform(options). Starts no thread. Throws std::bad_alloc alone.
Platform makePlatform(LinuxPlatformOptions options = {});

}  // namespace quorvance::qt

#pragma GCC visibility pop
