#pragma once

#include <string_view>

namespace quorvance {

/// Why a URL that may well parse cannot be sent to.
enum class UrlFault {
  none,
  /// Spaces, control characters or bytes outside ASCII.
  illegalCharacter,
  noScheme,
  /// A scheme other than http and https.
  foreignScheme,
  /// A user name in front of the host would go out as a header.
  userInformation,
  noHost,
  badHost,
  /// Not a number from 1 to 65535; an empty port is the scheme's own (RFC 3986, section 3.2.3).
  badPort,
};

/// What is wrong first. The HTTP library sees only faultless URLs: of others it guesses the host
/// ("http:/a", "a/b", "http:///a").
UrlFault faultOfUrl(std::string_view url);

/// The fault in words.
std::string_view textOfFault(UrlFault fault);

}  // namespace quorvance
