// Signatures of the risk server: what it signs with, and the verdict's signed copy.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace risk_server {

// 32 bytes of the system's random source. Throws std::system_error when it gives none.
std::string randomSigningKey();

// HMAC with SHA-256 (RFC 2104): 32 bytes.
std::string hmacSha256(std::string_view key, std::string_view message);

// JWS compact serialisation (RFC 7515) with HS256; `header` and `payload` are signed as they stand.
std::string jwsCompact(std::string_view header, std::string_view payload, std::string_view key);

struct Verdict {
  int risk = -1;
  std::string requestId;
  std::string userId;         // percent-decoded
  std::int64_t issuedAt = 0;  // seconds since 1970
};

// The "signedRisk" of a reply: a JWS over {"risk","requestID","user_id","iat"}.
std::string signVerdict(const Verdict& verdict, std::string_view key);

// The identifier that the server gives a device: always the same for one vendor identifier and one
// signing key, so a key given on the command line keeps it over restarts and nothing is stored.
std::string deviceIdentifier(std::string_view vendorIdentifier, std::string_view key);

}  // namespace risk_server
