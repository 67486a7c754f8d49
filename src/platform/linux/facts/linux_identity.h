#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/facts/root_files.h"
#include "quorvance/platform/identity.h"
#include "quorvance/platform/key_value_store.h"

namespace quorvance {

/// The 16 bytes of machine-id(5): absent for a text that is no such identifier, is all zeros or
/// says "uninitialized".
std::optional<std::string> machineIdBytes(std::string_view text);

/// What stands before the last dot of a host identifier; all of it when it has none.
std::string_view vendorOf(std::string_view hostIdentifier);

/// The machine's identifier for one vendor, as upper-case UUID text: an HMAC keyed with the machine
/// id, as systemd derives its application-specific identifiers. The machine id itself is
/// confidential and never leaves the device.
std::string vendorIdentifierFor(std::string_view machineIdBytes, std::string_view vendor);

/// The machine's identity. A machine without a usable machine id gets a random identifier, kept in
/// the key-value state and preferred from then on: the identifier must not jump when a machine id
/// appears later. Machines cloned from one image share their machine id and so this identifier.
/// Any thread; guarded by mutex_.
class LinuxIdentity : public IdentitySource {
 public:
  LinuxIdentity(RootFiles files, std::string_view hostIdentifier,
                std::shared_ptr<KeyValueStore> store);

  std::optional<std::string> vendorIdentifier() override;
  std::optional<std::string> advertisingIdentifier() override;
  std::string origin() const override;

 private:
  std::string makeVendorIdentifier(StoredEntry::Kind stored) const;

  const RootFiles files_;
  const std::string vendor_;
  const std::shared_ptr<KeyValueStore> store_;
  std::mutex mutex_;
  // What this process made, for as long as nothing is stored.
  std::optional<std::string> vendorIdentifier_;
  bool wasStored_ = false;
};

}  // namespace quorvance
