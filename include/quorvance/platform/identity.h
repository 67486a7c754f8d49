#pragma once

#include "quorvance/standard_library.h"

#include <optional>
#include <string>

#pragma GCC visibility push(default)

namespace quorvance {

/// Identifiers of the device. Called from any thread, also from host calls: after its first answer
/// an implementation answers from memory.
class IdentitySource {
 public:
  virtual ~IdentitySource() = default;
  /// The same for every application of one vendor on this device; a UUID as upper-case text. Absent
  /// when the platform gives none.
  virtual std::optional<std::string> vendorIdentifier() = 0;
  /// Absent unless the user allows advertising tracking; a UUID as upper-case text.
  virtual std::optional<std::string> advertisingIdentifier() = 0;
  /// Where the vendor identifier comes from, for people who review what is collected.
  virtual std::string origin() const { return "the application's own source"; }
};

}  // namespace quorvance

#pragma GCC visibility pop
