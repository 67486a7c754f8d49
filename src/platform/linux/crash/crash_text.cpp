#include "platform/linux/crash/crash_text.h"

#include <algorithm>
#include <array>

#include "base/text.h"

namespace quorvance {
namespace {

constexpr std::string_view kReplacementBytes = "\xEF\xBF\xBD";
constexpr std::string_view kLowerDigits = "0123456789abcdef";
constexpr std::size_t kMaxUtf8Bytes = 4;

// The letter after the backslash, or 0.
constexpr char shortEscape(char c) {
  switch (c) {
    case '"':
    case '\\':
      return c;
    case '\b':
      return 'b';
    case '\f':
      return 'f';
    case '\n':
      return 'n';
    case '\r':
      return 'r';
    case '\t':
      return 't';
    default:
      return 0;
  }
}

// Bytes of the well-formed character at the front, 0 if there is none.
std::size_t characterBytes(std::string_view text) {
  const std::size_t most = std::min(kMaxUtf8Bytes, text.size());
  for (std::size_t length = 1; length <= most; ++length) {
    if (isUtf8(text.substr(0, length))) return length;
  }
  return 0;
}

struct EscapedCharacter {
  std::array<char, 6> bytes{};
  std::size_t size = 0;
  std::size_t taken = 1;

  void take(std::string_view text) {
    std::copy(text.begin(), text.end(), bytes.begin());
    size = text.size();
  }
};

EscapedCharacter escapeFirst(std::string_view text) {
  EscapedCharacter escaped;
  const char c = text.front();
  if (const char letter = shortEscape(c); letter != 0) {
    escaped.bytes = {'\\', letter};
    escaped.size = 2;
  } else if (static_cast<unsigned char>(c) < 0x20) {
    const auto code = static_cast<unsigned char>(c);
    escaped.bytes = {'\\', 'u', '0', '0', kLowerDigits[code >> 4], kLowerDigits[code & 0x0F]};
    escaped.size = 6;
  } else if (const std::size_t length = characterBytes(text); length > 0) {
    escaped.take(text.substr(0, length));
    escaped.taken = length;
  } else {
    escaped.take(kReplacementBytes);
  }
  return escaped;
}

}  // namespace

void CrashText::append(std::string_view bytes) {
  const std::size_t count = std::min(bytes.size(), room());
  std::copy_n(bytes.begin(), count, memory_.begin() + static_cast<std::ptrdiff_t>(size_));
  size_ += count;
}

void CrashText::appendDecimal(std::int64_t number) {
  std::array<char, 20> digits{};
  std::size_t first = digits.size();
  auto rest = static_cast<std::uint64_t>(number);
  if (number < 0) rest = 0 - rest;
  do {
    digits[--first] = static_cast<char>('0' + rest % 10);
    rest /= 10;
  } while (rest != 0);
  if (number < 0) append("-");
  append({digits.data() + first, digits.size() - first});
}

void CrashText::appendHexadecimal(std::uintptr_t number) {
  std::array<char, 2 * sizeof(number)> digits{};
  std::size_t first = digits.size();
  do {
    digits[--first] = kLowerDigits[number & 0x0F];
    number >>= 4;
  } while (number != 0);
  append("0x");
  append({digits.data() + first, digits.size() - first});
}

void CrashText::appendEscaped(std::string_view text, std::size_t maxBytes) {
  std::size_t left = std::min(maxBytes, room());
  while (!text.empty()) {
    const EscapedCharacter escaped = escapeFirst(text);
    if (escaped.size > left) return;
    append({escaped.bytes.data(), escaped.size});
    left -= escaped.size;
    text.remove_prefix(escaped.taken);
  }
}

}  // namespace quorvance
