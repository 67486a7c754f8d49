#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace quorvance {

using Sha256Digest = std::array<std::uint8_t, 32>;

/// FIPS 180-4.
Sha256Digest sha256(std::string_view bytes);

/// RFC 2104 over SHA-256.
Sha256Digest hmacSha256(std::string_view key, std::string_view bytes);

}  // namespace quorvance
