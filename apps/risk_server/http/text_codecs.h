// Text encodings of the wire that the risk server reads or writes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace risk_server {

// Replaces each "%" with two hexadecimal digits by its byte; any other "%" stays as it is.
std::string percentDecode(std::string_view text);

// RFC 4648 section 4.
std::string base64(std::string_view bytes);

// RFC 4648 section 5, without padding.
std::string base64Url(std::string_view bytes);
// Nothing when the text is none of that.
std::optional<std::string> bytesFromBase64Url(std::string_view text);

// Lower case.
std::string hexText(std::string_view bytes);

// The bytes of pairs of hexadecimal digits, blanks between pairs allowed; nothing when it is none.
std::optional<std::string> bytesFromHex(std::string_view text);

// Whether the texts differ in the case of ASCII letters at most.
bool equalWithoutCase(std::string_view one, std::string_view other);

// Runs of slashes become one slash.
std::string squeezeSlashes(std::string_view path);

}  // namespace risk_server
