#pragma once

#include "quorvance/standard_library.h"

#include <optional>
#include <string>

namespace quorvance {

/// Who links the library in. Reverse-domain identifiers ("com.bank.app") are customary: what stands
/// before the last dot names the vendor.
struct HostApplication {
  std::string identifier;
  /// The version that the application shows to its users; absent when it has none.
  std::optional<std::string> shortVersion;
};

}  // namespace quorvance
