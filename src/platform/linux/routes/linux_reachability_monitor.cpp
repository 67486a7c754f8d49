#include "platform/linux/routes/linux_reachability_monitor.h"

#include <errno.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <atomic>
#include <mutex>
#include <utility>
#include <vector>

#include "base/collection.h"
#include "base/forked_child.h"
#include "platform/linux/routes/default_route.h"
#include "platform/linux/storage/private_files.h"

namespace quorvance {
namespace {

/// Closed where the kernel or a sandbox refuses one.
FileDescriptor openChangeSocket() {
  FileDescriptor changes(
      socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE));
  sockaddr_nl address = {};
  address.nl_family = AF_NETLINK;
  address.nl_groups = RTMGRP_LINK | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
  const auto* const any = reinterpret_cast<const sockaddr*>(&address);
  if (changes.isOpen() && bind(changes.number(), any, sizeof address) != 0) changes.reset();
  return changes;
}

/// Throws away what has come; false when the socket is of no more use.
bool drain(int descriptor) {
  std::array<char, 8192> message;
  for (;;) {
    if (recv(descriptor, message.data(), message.size(), MSG_DONTWAIT) >= 0) continue;
    if (errno == EAGAIN) return true;
    // Messages were lost; all is read anew anyway.
    if (errno != EINTR && errno != ENOBUFS) return false;
  }
}

}  // namespace

struct LinuxReachabilityMonitor::State {
  explicit State(RootFiles usedFiles) : files(std::move(usedFiles)) {}

  const RootFiles files;
  std::atomic<NetworkKind> kind{NetworkKind::unknown};
  std::mutex mutex;
  bool isWatching = false;
  std::vector<std::weak_ptr<NetworkListener>> listeners;

  /// Of a host that has switched collection off: who subscribed learns that it is over by a last
  /// call, and a later subscription begins anew. False.
  bool endWatch() {
    {
      const std::lock_guard lock(mutex);
      isWatching = false;
    }
    for (const auto& listener : alive()) {
      if (listener) (*listener)(kind);
    }
    return false;
  }

  std::vector<std::shared_ptr<NetworkListener>> alive() {
    const std::lock_guard lock(mutex);
    std::erase_if(listeners, [](const auto& listener) { return listener.expired(); });
    std::vector<std::shared_ptr<NetworkListener>> found;
    for (const auto& listener : listeners) found.push_back(listener.lock());
    return found;
  }
};

/// Opened on the watch thread, before the first reading, so that no change is missed.
class LinuxReachabilityMonitor::LinkWatch : public Watch {
 public:
  explicit LinkWatch(std::shared_ptr<State> state) : state_(std::move(state)) {}

  Need need() override { return {.descriptor = changes_.number(), .events = POLLIN}; }
  bool run() override {
    if (!isCollectionEnabled()) return state_->endWatch();
    const bool isAlive = drain(changes_.number());
    readAgain();
    return isAlive;
  }
  bool isOpen() const { return changes_.isOpen(); }

  void readAgain() {
    DefaultRoute route = readDefaultRoute(state_->files);
    if (std::exchange(isRead_, true) && route == route_) return;
    route_ = std::move(route);
    state_->kind = route_.kind;
    for (const auto& listener : state_->alive()) {
      if (listener) (*listener)(route_.kind);
    }
  }

 private:
  const std::shared_ptr<State> state_;
  const FileDescriptor changes_ = openChangeSocket();
  bool isRead_ = false;
  DefaultRoute route_;
};

LinuxReachabilityMonitor::LinuxReachabilityMonitor(RootFiles files,
                                                   std::shared_ptr<WatchThread> thread)
    : state_(std::make_shared<State>(std::move(files))), thread_(std::move(thread)) {}

LinuxReachabilityMonitor::~LinuxReachabilityMonitor() = default;

NetworkKind LinuxReachabilityMonitor::kind() { return state_->kind; }

std::shared_ptr<void> LinuxReachabilityMonitor::subscribe(NetworkListener listener) {
  auto subscription = std::make_shared<NetworkListener>(std::move(listener));
  if (isForkedChild()) return subscription;
  {
    const std::lock_guard lock(state_->mutex);
    state_->listeners.push_back(subscription);
    if (std::exchange(state_->isWatching, true)) return subscription;
  }
  thread_->post([state = state_, thread = std::weak_ptr(thread_)] {
    const auto watch = std::make_shared<LinkWatch>(state);
    watch->readAgain();
    const auto watchThread = thread.lock();
    if (watchThread && watch->isOpen()) watchThread->add(watch);
  });
  return subscription;
}

}  // namespace quorvance
