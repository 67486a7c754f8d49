#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "quorvance/platform/http_options.h"
#include "quorvance/platform/platform.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// What the Linux platform is made from. The defaults are right for an application; tests and
/// sandboxes replace single members.
struct LinuxPlatformOptions {
  /// An empty identifier stands for the executable's name.
  HostApplication hostApplication;
  /// The folder in which every fact file ("/etc/os-release", "/sys/...") is looked up.
  std::string root = "/";
  /// Stands for the process environment, which is otherwise read once, when the platform is made.
  std::optional<std::map<std::string, std::string>> environment;
  /// Where the state and the reports of this application live; absent means
  /// $XDG_DATA_HOME (or ~/.local/share) / host identifier / "quorvance". Folders are made with mode
  /// 0700, files with 0600. A folder of this user's that all may write to is narrowed; one of
  /// another user's but the administrator's is not used, and then nothing is kept.
  std::optional<std::string> dataFolder;
  /// The addresses of the buses; absent means those that the environment names, else the usual
  /// sockets. Only sockets of this machine are used.
  std::optional<std::string> systemBusAddress;
  std::optional<std::string> sessionBusAddress;
  /// Whether asking for the place and for permissions may start the services that answer. Without
  /// it, one that does not run tells nothing.
  bool mayStartServices = false;
  /// What only the application knows; each may be null. Permissions and place are asked of these
  /// before the system, settings of the user interface field by field.
  std::shared_ptr<HostAuthorization> authorization;
  std::shared_ptr<LocationSource> location;
  std::shared_ptr<FactSource<AccessibilityFacts>> accessibility;
  std::shared_ptr<UserDataSourceBase> userData;
  /// A main queue of the host's own, for example a HostLoopQueue; absent means a thread.
  std::shared_ptr<MainQueue> mainQueue;
  /// How the server is reached and recognised.
  HttpOptions http{};
  /// Sees every body before it is sent; empty: they are sent as they are.
  BeforeSend beforeSend{};
  /// Whether crashes may be caught at all, where the server's configuration wants it. False: no
  /// handler of signals or of std::terminate is ever installed, and no thread waits for a crash.
  bool mayCatchCrashes = true;
};

/// The platform of a Linux process: libcurl, kernel files, one state file. Passive: threads start
/// and files are read with the first use. Throws std::bad_alloc alone, and then nothing is left of
/// it.
Platform makeLinuxPlatform(LinuxPlatformOptions options = {});

}  // namespace quorvance

#pragma GCC visibility pop
