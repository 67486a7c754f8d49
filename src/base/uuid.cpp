#include "base/uuid.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "base/random.h"

namespace quorvance {

std::string randomUuid() {
  std::array<std::uint8_t, 16> bytes{};
  fillWithRandomBytes(bytes);
  bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);  // version 4
  bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);  // variant of RFC 4122
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  text.reserve(36);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 0x0F];
  }
  return text;
}

}  // namespace quorvance
