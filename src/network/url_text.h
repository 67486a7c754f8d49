#pragma once

#include <string_view>

namespace quorvance {

/// Whether the text is a URL at all (RFC 3986): not empty, printable ASCII without spaces, every
/// "%" followed by two hexadecimal digits. What parses may still be impossible to send to.
bool parsesAsUrl(std::string_view text);

/// Why a server's URL cannot work, in words; empty when nothing speaks against it. What it
/// tells changes nothing: calls go the way they always go.
std::string_view faultOfServerUrl(std::string_view url);

}  // namespace quorvance
