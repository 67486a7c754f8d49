#include "base/base64.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace quorvance {
namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kLineCharacters = 64;
constexpr std::string_view kLineBreak = "\r\n";

// Up to three bytes at the front, as four characters.
std::array<char, 4> groupOf(std::string_view bytes) {
  std::uint32_t bits = 0;
  for (std::size_t i = 0; i < 3; ++i) {
    bits = (bits << 8) | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
  }
  std::array<char, 4> group{};
  for (std::size_t i = 0; i < group.size(); ++i) {
    group[i] = i > bytes.size() ? '=' : kAlphabet[(bits >> (18 - 6 * i)) & 0x3F];
  }
  return group;
}

}  // namespace

std::string base64InLines(std::string_view bytes) {
  const std::size_t characters = (bytes.size() + 2) / 3 * 4;
  std::string text;
  text.reserve(characters + characters / kLineCharacters * kLineBreak.size());
  for (std::size_t done = 0; !bytes.empty(); done += 4) {
    if (done > 0 && done % kLineCharacters == 0) text += kLineBreak;
    const auto group = groupOf(bytes);
    text.append(group.data(), group.size());
    bytes.remove_prefix(bytes.size() < 3 ? bytes.size() : 3);
  }
  return text;
}

}  // namespace quorvance
