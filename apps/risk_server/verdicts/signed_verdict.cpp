#include "apps/risk_server/verdicts/signed_verdict.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <sys/random.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "apps/risk_server/http/text_codecs.h"
#include "apps/risk_server/server_json.h"

namespace risk_server {
namespace {

constexpr std::size_t kSigningKeyBytes = 32;
constexpr std::size_t kDeviceIdentifierBytes = 16;
constexpr std::string_view kJwsHeader = R"({"alg":"HS256"})";
// Keeps signatures of device identifiers apart from those of verdicts.
constexpr std::string_view kDevicePrefix = "device:";

}  // namespace

std::string randomSigningKey() {
  std::string key(kSigningKeyBytes, '\0');
  std::size_t filled = 0;
  while (filled < key.size()) {
    const ssize_t got = getrandom(key.data() + filled, key.size() - filled, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) throw std::system_error(errno, std::generic_category(), "getrandom");
    filled += static_cast<std::size_t>(got);
  }
  return key;
}

std::string hmacSha256(std::string_view key, std::string_view message) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned int length = 0;
  const std::string input(message);
  const auto* bytes = reinterpret_cast<const unsigned char*>(input.data());
  if (HMAC(EVP_sha256(), key.data(), static_cast<int>(key.size()), bytes, input.size(),
           digest.data(), &length) == nullptr) {
    throw std::runtime_error("HMAC failed");
  }
  return {reinterpret_cast<const char*>(digest.data()), length};
}

std::string jwsCompact(std::string_view header, std::string_view payload, std::string_view key) {
  const std::string signedText = base64Url(header) + "." + base64Url(payload);
  return signedText + "." + base64Url(hmacSha256(key, signedText));
}

std::string signVerdict(const Verdict& verdict, std::string_view key) {
  Json payload = Json::object();
  payload["risk"] = verdict.risk;
  payload["requestID"] = verdict.requestId;
  payload["user_id"] = verdict.userId;
  payload["iat"] = verdict.issuedAt;
  return jwsCompact(kJwsHeader, dumpServerJson(payload), key);
}

std::string deviceIdentifier(std::string_view vendorIdentifier, std::string_view key) {
  const std::string message = std::string(kDevicePrefix).append(vendorIdentifier);
  return "device-" + hexText(hmacSha256(key, message).substr(0, kDeviceIdentifierBytes));
}

}  // namespace risk_server
