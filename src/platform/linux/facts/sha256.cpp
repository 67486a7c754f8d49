#include "platform/linux/facts/sha256.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <string>

namespace quorvance {
namespace {

constexpr std::size_t kBlockBytes = 64;
constexpr std::size_t kLengthBytes = 8;

// The first 32 bits of the fractional parts of the square roots of the first 8 primes, and of the
// cube roots of the first 64.
constexpr std::array<std::uint32_t, 8> kInitialState = {
    0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a, 0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
constexpr std::array<std::uint32_t, 64> kRoundConstants = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

std::uint32_t bigEndianWord(const char* bytes) {
  std::uint32_t word = 0;
  for (int i = 0; i < 4; ++i) word = word << 8 | static_cast<std::uint8_t>(bytes[i]);
  return word;
}

std::array<std::uint32_t, 64> messageSchedule(const char* block) {
  std::array<std::uint32_t, 64> words = {};
  for (std::size_t i = 0; i < 16; ++i) words[i] = bigEndianWord(block + 4 * i);
  for (std::size_t i = 16; i < 64; ++i) {
    const std::uint32_t a = words[i - 15];
    const std::uint32_t b = words[i - 2];
    const std::uint32_t sigma0 = std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3;
    const std::uint32_t sigma1 = std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10;
    words[i] = words[i - 16] + sigma0 + words[i - 7] + sigma1;
  }
  return words;
}

// The names of the eight working variables are the standard's.
void addBlock(std::array<std::uint32_t, 8>& state, const char* block) {
  const std::array<std::uint32_t, 64> words = messageSchedule(block);
  auto [a, b, c, d, e, f, g, h] = state;
  for (std::size_t i = 0; i < 64; ++i) {
    const std::uint32_t sum1 = std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25);
    const std::uint32_t choice = (e & f) ^ (~e & g);
    const std::uint32_t first = h + sum1 + choice + kRoundConstants[i] + words[i];
    const std::uint32_t sum0 = std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22);
    const std::uint32_t majority = (a & b) ^ (a & c) ^ (b & c);
    h = g;
    g = f;
    f = e;
    e = d + first;
    d = c;
    c = b;
    b = a;
    a = first + sum0 + majority;
  }
  const std::array<std::uint32_t, 8> added = {a, b, c, d, e, f, g, h};
  for (std::size_t i = 0; i < state.size(); ++i) state[i] += added[i];
}

/// The message with a 1 bit, zeros and its length in bits, to whole blocks.
std::string padded(std::string_view bytes) {
  std::string message(bytes);
  message += '\x80';
  const std::size_t used = (message.size() + kLengthBytes) % kBlockBytes;
  message.append((kBlockBytes - used) % kBlockBytes, '\0');
  const std::uint64_t bits = std::uint64_t{bytes.size()} * 8;
  for (int shift = 56; shift >= 0; shift -= 8) message += static_cast<char>(bits >> shift & 0xff);
  return message;
}

std::string_view asText(const Sha256Digest& digest) {
  return {reinterpret_cast<const char*>(digest.data()), digest.size()};
}

}  // namespace

Sha256Digest sha256(std::string_view bytes) {
  const std::string message = padded(bytes);
  std::array<std::uint32_t, 8> state = kInitialState;
  for (std::size_t at = 0; at < message.size(); at += kBlockBytes) {
    addBlock(state, message.data() + at);
  }
  Sha256Digest digest = {};
  for (std::size_t i = 0; i < digest.size(); ++i) {
    digest[i] = static_cast<std::uint8_t>(state[i / 4] >> (24 - 8 * (i % 4)));
  }
  return digest;
}

Sha256Digest hmacSha256(std::string_view key, std::string_view bytes) {
  const Sha256Digest hashedKey = sha256(key);
  std::string block(key.size() > kBlockBytes ? asText(hashedKey) : key);
  block.resize(kBlockBytes, '\0');
  std::string inner = block;
  std::string outer = block;
  for (char& c : inner) c = static_cast<char>(c ^ 0x36);
  for (char& c : outer) c = static_cast<char>(c ^ 0x5c);
  const Sha256Digest innerDigest = sha256(inner.append(bytes));
  return sha256(outer.append(asText(innerDigest)));
}

}  // namespace quorvance
