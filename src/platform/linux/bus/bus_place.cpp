#include "platform/linux/bus/bus_place.h"

#include <algorithm>
#include <cstddef>

namespace quorvance {
namespace {

constexpr std::string_view kUnix = "unix:";

/// A path as a value in an address.
std::string escaped(std::string_view path) {
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_/.\\*";
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const char c : path) {
    if (kPlain.find(c) != std::string_view::npos) {
      text += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      text.append({'%', kDigits[byte >> 4], kDigits[byte & 0xf]});
    }
  }
  return text;
}

std::string socketAt(std::string_view path) { return std::string(kUnix) + "path=" + escaped(path); }

}  // namespace

std::string unixAddressesIn(std::string_view addresses) {
  std::string kept;
  while (!addresses.empty()) {
    const std::size_t end = std::min(addresses.find(';'), addresses.size());
    const std::string_view address = addresses.substr(0, end);
    if (address.starts_with(kUnix)) kept.append(kept.empty() ? "" : ";").append(address);
    addresses.remove_prefix(std::min(end + 1, addresses.size()));
  }
  return kept;
}

BusPlace systemBusOf(EnvironmentSource& environment, const RootFiles& files) {
  const auto named = environment.variable("DBUS_SYSTEM_BUS_ADDRESS");
  if (named && !named->empty()) return {unixAddressesIn(*named)};
  return {socketAt(files.underRoot("/run/dbus/system_bus_socket"))};
}

BusPlace sessionBusOf(EnvironmentSource& environment) {
  const auto named = environment.variable("DBUS_SESSION_BUS_ADDRESS");
  if (named && !named->empty()) return {unixAddressesIn(*named)};
  const auto folder = environment.variable("XDG_RUNTIME_DIR");
  if (!folder || !folder->starts_with('/')) return {};
  return {socketAt(*folder + "/bus")};
}

}  // namespace quorvance
