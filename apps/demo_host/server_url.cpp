#include "apps/demo_host/server_url.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace demo_host {
namespace {

constexpr std::string_view kSchemes[] = {"http://", "https://"};

bool isPrintableAscii(char c) { return c > ' ' && c < '\x7f'; }

// The text behind the scheme; nothing for another scheme.
std::string_view behindScheme(std::string_view url) {
  for (const std::string_view scheme : kSchemes) {
    if (url.starts_with(scheme)) return url.substr(scheme.size());
  }
  return {};
}

bool isPort(std::string_view text) {
  std::uint16_t port = 0;
  const char* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, port);
  return error == std::errc() && stopped == end && port != 0;
}

// An IPv6 address stands in brackets and holds colons of its own.
std::size_t endOfHost(std::string_view authority) {
  if (!authority.starts_with('[')) return std::min(authority.find(':'), authority.size());
  const auto bracket = authority.find(']');
  return bracket == std::string_view::npos ? 0 : bracket + 1;
}

std::string faultOfAuthority(std::string_view authority) {
  if (authority.find('@') != std::string_view::npos) return "it names a user";
  const std::size_t end = endOfHost(authority);
  if (end == 0) return "it names no host";
  const std::string_view port = authority.substr(end);
  if (!port.empty() && (port[0] != ':' || !isPort(port.substr(1)))) return "its port is no port";
  return {};
}

}  // namespace

std::string faultOfServerUrl(std::string_view url) {
  if (!std::all_of(url.begin(), url.end(), isPrintableAscii)) {
    return "it holds spaces or other characters that a URL must escape";
  }
  if (std::none_of(std::begin(kSchemes), std::end(kSchemes),
                   [&](std::string_view scheme) { return url.starts_with(scheme); })) {
    return "it must begin with http:// or https://";
  }
  if (url.find_first_of("?#") != std::string_view::npos) return "paths cannot be glued to a query";
  const std::string_view rest = behindScheme(url);
  return faultOfAuthority(rest.substr(0, rest.find('/')));
}

std::string withLastSlash(std::string url) {
  if (!url.ends_with('/')) url += '/';
  return url;
}

}  // namespace demo_host
