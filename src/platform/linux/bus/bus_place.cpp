#include "platform/linux/bus/bus_place.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
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

constexpr std::string_view kPathKey = "unix:path=";

std::string unescaped(std::string_view value) {
  std::string text;
  for (std::size_t i = 0; i < value.size(); ++i) {
    unsigned char byte = 0;
    const char* const end = value.data() + std::min(i + 3, value.size());
    const bool isEscape =
        value[i] == '%' && std::from_chars(value.data() + i + 1, end, byte, 16).ptr == end;
    text += isEscape ? static_cast<char>(byte) : value[i];
    if (isEscape) i += 2;
  }
  return text;
}

/// False when it is certain that nobody listens there.
bool mayBeThere(std::string_view address) {
  if (!address.starts_with(kPathKey)) return true;
  address.remove_prefix(kPathKey.size());
  return access(unescaped(address.substr(0, address.find(','))).c_str(), F_OK) == 0;
}

bool mayAnyBeThere(std::string_view addresses) {
  while (!addresses.empty()) {
    const std::size_t end = std::min(addresses.find(';'), addresses.size());
    if (mayBeThere(addresses.substr(0, end))) return true;
    addresses.remove_prefix(std::min(end + 1, addresses.size()));
  }
  return false;
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

std::shared_ptr<const SdBus> openSdBusFor(const BusPlace& place) {
  return mayAnyBeThere(place.address) ? openSdBus(place.libraryNames) : nullptr;
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
