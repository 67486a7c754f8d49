#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorvance {

/// The shortest digits that read back as the same number: positional with at least one fractional
/// digit from 1e-4 up to 1e16, in exponent form outside (12.0, 0.1, 100000.0, 1e+16).
std::string textOf(double number);

/// Whether the bytes are UTF-8 (RFC 3629: no overlong forms, no surrogates).
bool isUtf8(std::string_view bytes);

/// Whether the bytes are UTF-8 without control characters (Unicode category Cc): what a device says
/// of itself and nobody can read is not passed on.
bool isReadableText(std::string_view bytes);

/// The text with every maximal ill-formed part replaced by U+FFFD.
std::string replaceIllFormedUtf8(std::string_view bytes);

/// Percent-encodes everything but the characters that a URL query may hold (RFC 3986, section 3.4);
/// text that is not UTF-8 is replaced first.
std::string percentEncodeForQuery(std::string_view text);

/// A text argument in a trace: the text itself, "nil" when absent.
std::string textOrNil(const std::optional<std::string>& text);

}  // namespace quorvance
