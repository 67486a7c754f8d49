#include "platform/linux/facts/linux_identity.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "base/uuid.h"
#include "platform/linux/facts/sha256.h"

namespace quorvance {
namespace {

constexpr std::string_view kStoredKey = "vendorIdentifier";
constexpr std::size_t kIdBytes = 16;

// The library's own name space: random, and never to be changed.
constexpr std::string_view kNameSpace(
    "\xd2\xad\x1f\xd9\x1b\xb0\x44\x9e\xb9\xd8\xb5\x78\xf7\x97\x13\x5a", kIdBytes);

std::optional<unsigned> valueOfHexDigit(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a') + 10;
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A') + 10;
  return std::nullopt;
}

std::string firstIdBytes(const Sha256Digest& digest) {
  return std::string(digest.begin(), digest.begin() + kIdBytes);
}

std::string upperCaseUuid(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  for (std::size_t i = 0; i < kIdBytes; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    const auto byte = static_cast<std::uint8_t>(bytes[i]);
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xf];
  }
  return text;
}

bool isUpperCaseUuid(std::string_view text) {
  std::string digits(text);
  std::erase(digits, '-');
  const std::optional<std::string> bytes = machineIdBytes(digits);
  return bytes && upperCaseUuid(*bytes) == text;
}

}  // namespace

std::optional<std::string> machineIdBytes(std::string_view text) {
  if (text.size() != 2 * kIdBytes) return std::nullopt;
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const auto high = valueOfHexDigit(text[i]);
    const auto low = valueOfHexDigit(text[i + 1]);
    if (!high || !low) return std::nullopt;
    bytes += static_cast<char>(*high << 4 | *low);
  }
  const bool isBlank = std::all_of(bytes.begin(), bytes.end(), [](char c) { return c == '\0'; });
  return isBlank ? std::nullopt : std::optional(std::move(bytes));
}

std::string_view vendorOf(std::string_view hostIdentifier) {
  return hostIdentifier.substr(0, hostIdentifier.rfind('.'));
}

std::string vendorIdentifierFor(std::string_view machineIdBytes, std::string_view vendor) {
  const std::string application = firstIdBytes(sha256(std::string(kNameSpace).append(vendor)));
  std::string bytes = firstIdBytes(hmacSha256(machineIdBytes, application));
  // Version 4, variant 1 (RFC 4122, section 4.4).
  bytes[6] = static_cast<char>((bytes[6] & 0x0f) | 0x40);
  bytes[8] = static_cast<char>((bytes[8] & 0x3f) | 0x80);
  return upperCaseUuid(bytes);
}

LinuxIdentity::LinuxIdentity(RootFiles files, std::string_view hostIdentifier,
                             std::shared_ptr<KeyValueStore> store)
    : files_(std::move(files)), vendor_(vendorOf(hostIdentifier)), store_(std::move(store)) {}

std::optional<std::string> LinuxIdentity::vendorIdentifier() {
  const std::lock_guard lock(mutex_);
  // Asked for each time: the store may come to know it late, from the disk or another process.
  const StoredEntry stored = store_->read(kStoredKey);
  if (isUpperCaseUuid(stored.text)) {
    wasStored_ = true;
    return stored.text;
  }
  // The state has been erased: a random identifier of before must not go on in memory.
  if (std::exchange(wasStored_, false)) vendorIdentifier_.reset();
  if (!vendorIdentifier_) vendorIdentifier_ = makeVendorIdentifier(stored.kind);
  return vendorIdentifier_;
}

std::optional<std::string> LinuxIdentity::advertisingIdentifier() { return std::nullopt; }

std::string LinuxIdentity::origin() const {
  return "HMAC of the vendor, keyed with /etc/machine-id; else a stored random one";
}

// What stands under the key and is no identifier gives way.
std::string LinuxIdentity::makeVendorIdentifier(StoredEntry::Kind stored) const {
  const std::optional<std::string> text = files_.fact("/etc/machine-id");
  if (const auto machineId = machineIdBytes(text.value_or(""))) {
    return vendorIdentifierFor(*machineId, vendor_);
  }
  std::string random = randomUuid();
  if (stored == StoredEntry::Kind::absent) {
    store_->writeDefault(kStoredKey, random);
  } else {
    store_->write(kStoredKey, random);
  }
  return random;
}

}  // namespace quorvance
