#include "platform/linux/routes/default_route.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace quorvance {
namespace {

// Some thousand routes; with more, the machine is a router and no customer's device.
constexpr std::size_t kMaxTableBytes = 1 << 20;

// Flags of a route (linux/route.h).
constexpr std::uint32_t kIsUp = 0x1;
constexpr std::uint32_t kRejects = 0x200;

struct RouteCandidate {
  std::uint32_t metric = 0;
  std::string interface;
};

using Columns = std::vector<std::string_view>;

Columns columnsOf(std::string_view line) {
  Columns columns;
  constexpr std::string_view kBlanks = " \t";
  while ((line = line.substr(std::min(line.find_first_not_of(kBlanks), line.size()))).size() > 0) {
    const std::size_t end = std::min(line.find_first_of(kBlanks), line.size());
    columns.push_back(line.substr(0, end));
    line.remove_prefix(end);
  }
  return columns;
}

std::optional<std::uint32_t> number(std::string_view digits, int base) {
  std::uint32_t value = 0;
  const char* const end = digits.data() + digits.size();
  const auto [rest, error] = std::from_chars(digits.data(), end, value, base);
  return error == std::errc() && rest == end ? std::optional(value) : std::nullopt;
}

bool isZero(std::string_view hexadecimal) {
  return hexadecimal.find_first_not_of('0') == std::string_view::npos;
}

std::optional<RouteCandidate> candidate(std::string_view interface, std::string_view flags,
                                        const std::optional<std::uint32_t>& metric) {
  const auto bits = number(flags, 16);
  if (!bits || !metric || (*bits & kIsUp) == 0 || (*bits & kRejects) != 0) return std::nullopt;
  // It becomes a part of a path.
  const bool isName = interface.find('/') == std::string_view::npos && interface != "lo" &&
                      interface != "." && interface != "..";
  return isName ? std::optional(RouteCandidate{*metric, std::string(interface)}) : std::nullopt;
}

/// Interface, destination, gateway, flags, references, uses, metric, mask ...
std::optional<RouteCandidate> ipv4Default(const Columns& columns) {
  if (columns.size() < 8 || !isZero(columns[1]) || !isZero(columns[7])) return std::nullopt;
  return candidate(columns[0], columns[3], number(columns[6], 10));
}

/// Destination, its length, source, its length, next hop, metric, references, uses, flags,
/// interface.
std::optional<RouteCandidate> ipv6Default(const Columns& columns) {
  if (columns.size() < 10 || !isZero(columns[0]) || !isZero(columns[1])) return std::nullopt;
  return candidate(columns[9], columns[8], number(columns[5], 16));
}

void addDefaults(std::vector<RouteCandidate>& found, std::string_view table,
                 std::optional<RouteCandidate> (*defaultOf)(const Columns&)) {
  const auto first = static_cast<std::ptrdiff_t>(found.size());
  while (!table.empty()) {
    const std::size_t end = std::min(table.find('\n'), table.size());
    if (auto route = defaultOf(columnsOf(table.substr(0, end)))) found.push_back(std::move(*route));
    table.remove_prefix(std::min(end + 1, table.size()));
  }
  std::stable_sort(found.begin() + first, found.end(),
                   [](const auto& a, const auto& b) { return a.metric < b.metric; });
}

bool hasLine(std::string_view lines, std::string_view wanted) {
  const std::size_t at = lines.find(wanted);
  if (at == std::string_view::npos || (at > 0 && lines[at - 1] != '\n')) return false;
  const std::size_t end = at + wanted.size();
  return end == lines.size() || lines[end] == '\n';
}

NetworkKind kindOf(const RootFiles& files, const std::string& folder) {
  const std::string event = files.text(folder + "/uevent").value_or("");
  if (hasLine(event, "DEVTYPE=wwan")) return NetworkKind::wwan;
  const bool isWireless = hasLine(event, "DEVTYPE=wlan") ||
                          files.linkTarget(folder + "/phy80211") ||
                          !files.names(folder + "/wireless").empty();
  return isWireless ? NetworkKind::wlan : NetworkKind::other;
}

}  // namespace

DefaultRoute readDefaultRoute(const RootFiles& files) {
  const auto ipv4 = files.text("/proc/net/route", kMaxTableBytes);
  const auto ipv6 = files.text("/proc/net/ipv6_route", kMaxTableBytes);
  if (!ipv4 && !ipv6) return {};
  std::vector<RouteCandidate> routes;
  addDefaults(routes, ipv4.value_or(""), &ipv4Default);
  addDefaults(routes, ipv6.value_or(""), &ipv6Default);
  for (RouteCandidate& route : routes) {
    const std::string folder = "/sys/class/net/" + route.interface;
    if (files.fact(folder + "/carrier") != "1") continue;
    return {kindOf(files, folder), std::move(route.interface)};
  }
  return {NetworkKind::none, {}};
}

}  // namespace quorvance
