#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <future>
#include <iterator>
#include <mutex>
#include <string>
#include <vector>

#include "base/forked_child.h"
#include "platform/linux/routes/default_route.h"
#include "platform/linux/routes/linux_network_facts.h"
#include "platform/linux/routes/linux_reachability_monitor.h"
#include "platform/linux/routes/network_namespace_test_support.h"
#include "platform/testing/forked_child_test_support.h"

namespace quorvance {
namespace {

constexpr std::chrono::seconds kTimeout{20};

std::string nameOf(NetworkKind kind) {
  const char* const names[] = {"none", "wlan", "wwan", "other", "unknown"};
  return names[static_cast<std::size_t>(kind)];
}

/// Waits for the kinds that a monitor tells.
class KindInbox {
 public:
  NetworkListener listener() {
    return [this](NetworkKind kind) {
      const std::lock_guard lock(mutex_);
      last_ = kind;
      told_.notify_all();
    };
  }
  bool waitFor(NetworkKind kind) {
    std::unique_lock lock(mutex_);
    return told_.wait_for(lock, kTimeout, [&] { return last_ == kind; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable told_;
  std::optional<NetworkKind> last_;
};

class DefaultRouteTest : public testing::Test {
 protected:
  // Of 128 bits, as ipv6_route writes them.
  const std::string zeros_ = std::string(32, '0');

  void putIpv4(const std::vector<std::string>& routes) const {
    std::string table = "Iface\tDestination\tGateway\tFlags\tRefCnt\tUse\tMetric\tMask\tMTU\n";
    for (const std::string& route : routes) table += route + "\t0\t0\t0  \n";
    folder_.put("proc/net/route", table);
  }
  static std::string ipv4(const std::string& interface, const std::string& metric,
                          const std::string& flags = "0003") {
    return interface + "\t00000000\t0102000A\t" + flags + "\t0\t0\t" + metric + "\t00000000";
  }
  void putIpv6(const std::string& interface, const std::string& metric) const {
    folder_.put("proc/net/ipv6_route", zeros_ + " 00 " + zeros_ + " 00 " + zeros_ + " " + metric +
                                           " 00000001 00000000 00000003 " + interface + "\n");
  }
  void link(const std::string& name, const std::string& carrier, const std::string& uevent) const {
    folder_.put("sys/class/net/" + name + "/carrier", carrier);
    folder_.put("sys/class/net/" + name + "/uevent", uevent);
  }
  /// "kind interface"
  std::string route() const {
    const DefaultRoute route = readDefaultRoute(RootFiles(folder_.path()));
    return nameOf(route.kind) + " " + route.interface;
  }

  TemporaryFolder folder_;
};

TEST_F(DefaultRouteTest, IsTheLowestMetricWithACarrierIpv4First) {
  EXPECT_EQ(route(), "unknown ");
  putIpv6("six0", "00000001");
  link("six0", "1\n", "INTERFACE=six0\n");
  EXPECT_EQ(route(), "other six0");
  putIpv4({"eth0\t000200C0\t00000000\t0001\t0\t0\t0\t00FFFFFF"});
  EXPECT_EQ(route(), "other six0") << "a route to the neighbours is no default route";
  putIpv4({ipv4("wwan0", "700"), ipv4("wlan0", "600"), ipv4("eth0", "100")});
  link("wwan0", "1\n", "DEVTYPE=wwan\nINTERFACE=wwan0\n");
  EXPECT_EQ(route(), "wwan wwan0");
  link("wlan0", "1\n", "INTERFACE=wlan0\nDEVTYPE=wlan");
  EXPECT_EQ(route(), "wlan wlan0");
  link("eth0", "0\n", "INTERFACE=eth0\n");
  EXPECT_EQ(route(), "wlan wlan0");
  link("eth0", "1\n", "INTERFACE=eth0\nXDEVTYPE=wlan\nDEVTYPE=wlanx\n");
  EXPECT_EQ(route(), "other eth0");
  folder_.put("sys/class/net/eth0/wireless/status", "0\n");
  EXPECT_EQ(route(), "wlan eth0");
}

TEST_F(DefaultRouteTest, LinesThatAreNoUsableRouteAreSkipped) {
  link("eth0", "1\n", "");
  for (const std::string& line :
       {ipv4("eth0", "0", "0002"), ipv4("eth0", "0", "0201"), ipv4("eth0", "99999999999"),
        ipv4("eth0", "x"), ipv4("lo", "0"), ipv4("../net/eth0", "0"), ipv4("..", "0"),
        std::string("eth0"), std::string(3000, '\t'), std::string("\xff\0\x01", 3)}) {
    putIpv4({line});
    EXPECT_EQ(route(), "none ") << line;
  }
  putIpv4({ipv4("ppp0", "0"), ipv4("eth0", "1")});
  EXPECT_EQ(route(), "other eth0") << "an interface without files has no carrier";
  putIpv4({std::string(2 << 20, 'x')});
  EXPECT_EQ(route(), "unknown ");
}

// The real kernel's files and messages.
TEST(LinuxReachabilityTest, FollowsTheKernelThroughEveryChange) {
  const bool hasRun = runInNetworkNamespace([](const std::string& root) {
    const auto thread = std::make_shared<WatchThread>();
    LinuxReachabilityMonitor monitor(RootFiles(root), thread);
    EXPECT_EQ(monitor.kind(), NetworkKind::unknown);
    KindInbox inbox;
    const auto subscription = monitor.subscribe(inbox.listener());
    EXPECT_TRUE(inbox.waitFor(NetworkKind::none));
    ip("link add near type veth peer name far");
    ip("link set near up");
    ip("addr add 10.9.0.1/24 dev near");
    ip("route add default via 10.9.0.2 metric 50");
    EXPECT_EQ(readDefaultRoute(RootFiles(root)).kind, NetworkKind::none) << "the peer is down";
    ip("link set far up");
    EXPECT_TRUE(inbox.waitFor(NetworkKind::other));
    EXPECT_EQ(LinuxNetworkFacts(RootFiles(root), {}).read().isDefaultRouteWireless, false);
    ip("link set far down");
    EXPECT_TRUE(inbox.waitFor(NetworkKind::none));
    ip("link set far up");
    EXPECT_TRUE(inbox.waitFor(NetworkKind::other));
    ip("route del default");
    EXPECT_TRUE(inbox.waitFor(NetworkKind::none));
    ip("-6 addr add fd00::1/64 dev near nodad");
    ip("-6 route add default via fd00::2");
    EXPECT_TRUE(inbox.waitFor(NetworkKind::other));
    ip("link set near down");
    EXPECT_TRUE(inbox.waitFor(NetworkKind::none));
    EXPECT_EQ(monitor.kind(), NetworkKind::none);
  });
  if (!hasRun && geteuid() != 0) GTEST_SKIP() << "needs root";
  EXPECT_TRUE(hasRun);
}

// While the listener keeps the thread, the kernel has more to say than it keeps for it.
TEST(LinuxReachabilityTest, ReadsAllAgainWhenMessagesWereLost) {
  const bool hasRun = runInNetworkNamespace([](const std::string& root) {
    const auto thread = std::make_shared<WatchThread>();
    LinuxReachabilityMonitor monitor(RootFiles(root), thread);
    KindInbox inbox;
    std::promise<void> firstCall;
    std::promise<void> released;
    bool isFirst = true;
    const auto subscription = monitor.subscribe([&, tell = inbox.listener()](NetworkKind kind) {
      if (std::exchange(isFirst, false)) {
        firstCall.set_value();
        released.get_future().wait();
      }
      tell(kind);
    });
    firstCall.get_future().wait();
    std::string batch = "link add near type veth peer name far\n";
    for (int i = 0; i < 2000; ++i) batch += "link set near mtu " + std::to_string(1000 + i) + "\n";
    batch += "link set near up\nlink set far up\naddr add 10.9.0.1/24 dev near\n";
    std::ofstream(root + "/batch") << batch + "route add default via 10.9.0.2\n";
    ip("-batch " + root + "/batch");
    released.set_value();
    EXPECT_TRUE(inbox.waitFor(NetworkKind::other));
    ip("link set far down");
    EXPECT_TRUE(inbox.waitFor(NetworkKind::none)) << "and goes on listening";
  });
  if (!hasRun && geteuid() != 0) GTEST_SKIP() << "needs root";
  EXPECT_TRUE(hasRun);
}

TEST(LinuxReachabilityTest, StartsNothingInAForkedChild) {
  watchForForks();
  LinuxReachabilityMonitor monitor(RootFiles("/"), std::make_shared<WatchThread>());
  const auto threads = [] {
    const auto tasks = std::filesystem::directory_iterator("/proc/self/task");
    return std::distance(begin(tasks), end(tasks));
  };
  EXPECT_TRUE(childEndsWell([&] {
    const auto before = threads();  // a sanitizer may have one of its own
    const auto subscription = monitor.subscribe([](NetworkKind) { _exit(3); });
    if (threads() != before) _exit(4);
  }));
}

}  // namespace
}  // namespace quorvance
