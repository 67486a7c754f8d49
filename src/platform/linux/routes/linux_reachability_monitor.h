#pragma once

#include <memory>

#include "platform/linux/facts/root_files.h"
#include "platform/linux/threads/watch_thread.h"
#include "quorvance/platform/reachability.h"

namespace quorvance {

/// Reads the default route whenever the kernel tells of a change of links or routes (rtnetlink).
/// What the messages say is not read: each has all read anew, so that messages lost in a burst cost
/// nothing. Passive until the first subscription. Guarded by the state's mutex.
class LinuxReachabilityMonitor : public ReachabilityMonitor {
 public:
  LinuxReachabilityMonitor(RootFiles files, std::shared_ptr<WatchThread> thread);
  ~LinuxReachabilityMonitor() override;

  NetworkKind kind() override;
  [[nodiscard]] std::shared_ptr<void> subscribe(NetworkListener listener) override;

 private:
  struct State;
  class LinkWatch;

  // Shared with the watch, which may outlive the monitor.
  std::shared_ptr<State> state_;
  const std::shared_ptr<WatchThread> thread_;
};

}  // namespace quorvance
