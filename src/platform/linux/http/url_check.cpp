#include "platform/linux/http/url_check.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace quorvance {
namespace {

bool isAsciiLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isAsciiDigit(char c) { return c >= '0' && c <= '9'; }
bool isGraphicAscii(char c) { return c > ' ' && c < '\x7f'; }

bool isSchemeCharacter(char c) {
  return isAsciiLetter(c) || isAsciiDigit(c) || c == '+' || c == '-' || c == '.';
}

bool isHostCharacter(char c) {
  return isAsciiLetter(c) || isAsciiDigit(c) || c == '-' || c == '.' || c == '_' || c == '~';
}

bool isAddressCharacter(char c) {
  return isAsciiLetter(c) || isAsciiDigit(c) || c == ':' || c == '.' || c == '%';
}

bool equalsIgnoringCase(std::string_view text, std::string_view lowerCase) {
  return std::equal(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(),
                    [](char a, char b) { return (isAsciiLetter(a) ? a | 0x20 : a) == b; });
}

UrlFault faultOfScheme(std::string_view scheme) {
  if (scheme.empty() || !isAsciiLetter(scheme.front())) return UrlFault::noScheme;
  if (!std::all_of(scheme.begin(), scheme.end(), isSchemeCharacter)) return UrlFault::noScheme;
  const bool known = equalsIgnoringCase(scheme, "http") || equalsIgnoringCase(scheme, "https");
  return known ? UrlFault::none : UrlFault::foreignScheme;
}

/// `port` with its colon in front, or empty.
UrlFault faultOfPort(std::string_view port) {
  if (port.empty() || port == ":") return UrlFault::none;
  if (port.front() != ':') return UrlFault::badHost;
  port.remove_prefix(1);
  std::uint16_t number = 0;
  const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), number);
  const bool isWhole = error == std::errc() && end == port.data() + port.size();
  return isWhole && number != 0 ? UrlFault::none : UrlFault::badPort;
}

UrlFault faultOfBracketedHost(std::string_view authority) {
  const std::size_t end = authority.find(']');
  if (end == std::string_view::npos) return UrlFault::badHost;
  const std::string_view address = authority.substr(1, end - 1);
  if (address.empty()) return UrlFault::noHost;
  if (!std::all_of(address.begin(), address.end(), isAddressCharacter)) return UrlFault::badHost;
  return faultOfPort(authority.substr(end + 1));
}

UrlFault faultOfAuthority(std::string_view authority) {
  if (authority.find('@') != std::string_view::npos) return UrlFault::userInformation;
  if (authority.starts_with('[')) return faultOfBracketedHost(authority);
  const std::size_t colon = std::min(authority.find(':'), authority.size());
  const std::string_view host = authority.substr(0, colon);
  if (host.empty()) return UrlFault::noHost;
  if (!std::all_of(host.begin(), host.end(), isHostCharacter)) return UrlFault::badHost;
  return faultOfPort(authority.substr(colon));
}

}  // namespace

UrlFault faultOfUrl(std::string_view url) {
  if (!std::all_of(url.begin(), url.end(), isGraphicAscii)) return UrlFault::illegalCharacter;
  const std::size_t colon = url.find(':');
  if (colon == std::string_view::npos) return UrlFault::noScheme;
  if (const UrlFault fault = faultOfScheme(url.substr(0, colon)); fault != UrlFault::none) {
    return fault;
  }
  std::string_view rest = url.substr(colon + 1);
  if (!rest.starts_with("//")) return UrlFault::noHost;
  rest.remove_prefix(2);
  return faultOfAuthority(rest.substr(0, rest.find_first_of("/?#")));
}

std::string_view textOfFault(UrlFault fault) {
  switch (fault) {
    case UrlFault::none:
      return "the URL can be sent to";
    case UrlFault::illegalCharacter:
      return "the URL holds a character that must be percent-encoded";
    case UrlFault::noScheme:
      return "the URL has no scheme";
    case UrlFault::foreignScheme:
      return "the URL's scheme is neither http nor https";
    case UrlFault::userInformation:
      return "the URL names a user";
    case UrlFault::noHost:
      return "the URL has no host";
    case UrlFault::badHost:
      return "the URL's host is malformed";
    case UrlFault::badPort:
      return "the URL's port is not a number from 1 to 65535";
  }
  return "the URL cannot be sent to";
}

}  // namespace quorvance
