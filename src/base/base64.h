#pragma once

#include <string>
#include <string_view>

namespace quorvance {

/// The bytes in base64 (RFC 4648, section 4), padded, a line break (CR LF) after every 64
/// characters but the last.
std::string base64InLines(std::string_view bytes);

}  // namespace quorvance
