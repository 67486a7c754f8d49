#include "base/text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>

namespace quorvance {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// Length of the well-formed sequence at the front, or 0; then `bad` is the length of the maximal
// ill-formed part (Unicode 15, table 3-7).
struct Utf8Step {
  std::size_t good = 0;
  std::size_t bad = 1;
};

bool isBetween(unsigned char byte, unsigned char low, unsigned char high) {
  return byte >= low && byte <= high;
}

Utf8Step utf8Step(std::string_view bytes) {
  const auto at = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const unsigned char lead = at(0);
  if (lead < 0x80) return {1, 0};
  std::size_t length = 0;
  unsigned char low = 0x80;
  unsigned char high = 0xBF;
  if (isBetween(lead, 0xC2, 0xDF)) {
    length = 2;
  } else if (isBetween(lead, 0xE0, 0xEF)) {
    length = 3;
    if (lead == 0xE0) low = 0xA0;
    if (lead == 0xED) high = 0x9F;
  } else if (isBetween(lead, 0xF0, 0xF4)) {
    length = 4;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;
  } else {
    return {0, 1};
  }
  for (std::size_t i = 1; i < length; ++i) {
    if (i >= bytes.size() || !isBetween(at(i), low, high)) return {0, i};
    low = 0x80;
    high = 0xBF;
  }
  return {length, 0};
}

bool isAllowedInQuery(char c) {
  constexpr std::string_view kAllowed =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~!$&'()*+,;=:@/?";
  return kAllowed.find(c) != std::string_view::npos;
}

}  // namespace

std::string textOf(double number) {
  std::array<char, 64> buffer{};
  const double size = std::fabs(number);
  const bool positional = number == 0.0 || (size >= 1e-4 && size < 1e16);
  const auto format = positional ? std::chars_format::fixed : std::chars_format::scientific;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, format).ptr;
  std::string text(buffer.data(), end);
  if (positional && text.find('.') == std::string::npos) text += ".0";
  return text;
}

bool isUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const Utf8Step step = utf8Step(bytes);
    if (step.good == 0) return false;
    bytes.remove_prefix(step.good);
  }
  return true;
}

bool isReadableText(std::string_view bytes) {
  // C0, DEL, and C1, whose second byte follows 0xC2.
  const auto isControl = [&](std::size_t i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    return byte < 0x20 || byte == 0x7F ||
           (byte == 0xC2 && i + 1 < bytes.size() &&
            static_cast<unsigned char>(bytes[i + 1]) < 0xA0);
  };
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (isControl(i)) return false;
  }
  return isUtf8(bytes);
}

std::string replaceIllFormedUtf8(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  while (!bytes.empty()) {
    const Utf8Step step = utf8Step(bytes);
    text += step.good > 0 ? bytes.substr(0, step.good) : kReplacement;
    bytes.remove_prefix(step.good > 0 ? step.good : step.bad);
  }
  return text;
}

std::string percentEncodeForQuery(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string encoded;
  for (const char c : isUtf8(text) ? std::string(text) : replaceIllFormedUtf8(text)) {
    if (isAllowedInQuery(c)) {
      encoded += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    encoded += '%';
    encoded += kDigits[byte >> 4];
    encoded += kDigits[byte & 0x0F];
  }
  return encoded;
}

std::string textOrNil(const std::optional<std::string>& text) { return text.value_or("nil"); }

}  // namespace quorvance
