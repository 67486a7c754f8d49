#pragma once

#include <functional>
#include <string>

#include "platform/linux/facts/root_files.h"
#include "quorvance/platform/environment.h"

namespace quorvance {

/// Under which identifier the desktop knows this application.
struct Sandbox {
  /// It runs in a sandbox, where the desktop decides what it may use.
  bool isSandboxed = false;
  std::string application;
};

/// Inside Flatpak and Snap the identifier is the sandbox's own, else the host's.
Sandbox sandboxOf(EnvironmentSource& environment, const RootFiles& files,
                  const std::string& hostIdentifier);

/// Reads a file, so it is asked on the watch thread.
using FindSandbox = std::function<Sandbox()>;

}  // namespace quorvance
