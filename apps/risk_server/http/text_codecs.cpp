#include "apps/risk_server/http/text_codecs.h"

#include <algorithm>
#include <cstdint>

namespace risk_server {
namespace {

constexpr std::string_view kBase64UrlAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
constexpr std::string_view kHexDigits = "0123456789abcdef";

int hexDigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

}  // namespace

std::string percentDecode(std::string_view text) {
  std::string decoded;
  decoded.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int high = text[i] == '%' && i + 2 < text.size() ? hexDigitValue(text[i + 1]) : -1;
    const int low = high >= 0 ? hexDigitValue(text[i + 2]) : -1;
    if (low >= 0) {
      decoded.push_back(static_cast<char>(high * 16 + low));
      i += 2;
    } else {
      decoded.push_back(text[i]);
    }
  }
  return decoded;
}

std::string base64Url(std::string_view bytes) {
  std::string encoded;
  encoded.reserve((bytes.size() * 4 + 2) / 3);
  std::uint32_t window = 0;
  unsigned bits = 0;
  for (const char byte : bytes) {
    window = (window << 8U) | static_cast<unsigned char>(byte);
    bits += 8;
    while (bits >= 6) {
      bits -= 6;
      encoded.push_back(kBase64UrlAlphabet[(window >> bits) & 0x3FU]);
    }
  }
  if (bits > 0) encoded.push_back(kBase64UrlAlphabet[(window << (6 - bits)) & 0x3FU]);
  return encoded;
}

std::string base64(std::string_view bytes) {
  std::string encoded = base64Url(bytes);
  for (char& c : encoded) c = c == '-' ? '+' : c == '_' ? '/' : c;
  encoded.append((4 - encoded.size() % 4) % 4, '=');
  return encoded;
}

std::optional<std::string> bytesFromBase64Url(std::string_view text) {
  std::string bytes;
  std::uint32_t window = 0;
  unsigned bits = 0;
  for (const char c : text) {
    const auto value = kBase64UrlAlphabet.find(c);
    if (value == std::string_view::npos) return std::nullopt;
    window = (window << 6U) | static_cast<std::uint32_t>(value);
    bits += 6;
    if (bits < 8) continue;
    bits -= 8;
    bytes.push_back(static_cast<char>((window >> bits) & 0xFFU));
  }
  return bytes;
}

std::string hexText(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() * 2);
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text.push_back(kHexDigits[byte >> 4U]);
    text.push_back(kHexDigits[byte & 0x0FU]);
  }
  return text;
}

std::optional<std::string> bytesFromHex(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] == ' ') {
      ++i;
      continue;
    }
    const int high = hexDigitValue(text[i]);
    const int low = i + 1 < text.size() ? hexDigitValue(text[i + 1]) : -1;
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<char>(high * 16 + low));
    i += 2;
  }
  return bytes;
}

bool equalWithoutCase(std::string_view one, std::string_view other) {
  const auto lower = [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  };
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [&](char a, char b) { return lower(a) == lower(b); });
}

std::string squeezeSlashes(std::string_view path) {
  std::string squeezed;
  for (const char c : path) {
    if (c != '/' || squeezed.empty() || squeezed.back() != '/') squeezed.push_back(c);
  }
  return squeezed;
}

}  // namespace risk_server
