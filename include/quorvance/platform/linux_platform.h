#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

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
  /// 0700, files with 0600.
  std::optional<std::string> dataFolder;
  /// A main queue of the host's own, for example a HostLoopQueue; absent means a thread.
  std::shared_ptr<MainQueue> mainQueue;
};

/// The platform of a Linux process: libcurl, kernel files, one state file. Passive: threads start
/// and files are read with the first use. Throws nothing.
Platform makeLinuxPlatform(LinuxPlatformOptions options = {});

/// A main queue that runs on the host's own event loop: the host watches `descriptor()` for
/// readability (GLib, Qt, epoll) and calls `dispatch()` on its thread when it is readable.
class HostLoopQueue : public MainQueue {
 public:
  HostLoopQueue();
  ~HostLoopQueue() override;
  HostLoopQueue(const HostLoopQueue&) = delete;
  HostLoopQueue& operator=(const HostLoopQueue&) = delete;

  /// Owned by the queue; -1 when the kernel refused one, and then nothing ever runs.
  int descriptor() const;
  /// Runs what is due now; tasks that they post are left for the next call. Host's loop thread
  /// only.
  void dispatch();

  void post(Task task) override;
  void postAfter(std::chrono::milliseconds delay, Task task) override;

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace quorvance

#pragma GCC visibility pop
