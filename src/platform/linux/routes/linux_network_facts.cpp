#include "platform/linux/routes/linux_network_facts.h"

#include "platform/linux/bus/modem_facts.h"
#include "platform/linux/routes/default_route.h"

namespace quorvance {

NetworkFacts LinuxNetworkFacts::read() {
  NetworkFacts facts = readModem(systemBus_);
  const NetworkKind kind = readDefaultRoute(files_).kind;
  if (kind != NetworkKind::unknown) facts.isDefaultRouteWireless = kind == NetworkKind::wlan;
  return facts;
}

std::string LinuxNetworkFacts::origin(std::string_view field) const {
  if (field == "isDefaultRouteWireless") {
    return "/proc/net/route, /proc/net/ipv6_route, /sys/class/net";
  }
  return field == "carrierCountry" ? "the carrier's country code" : "D-Bus: ModemManager";
}

}  // namespace quorvance
