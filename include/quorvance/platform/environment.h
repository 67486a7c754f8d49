#pragma once

#include "quorvance/standard_library.h"

#include <optional>
#include <string>
#include <string_view>

#pragma GCC visibility push(default)

namespace quorvance {

/// The process environment and the kernel's name for the machine. Called from any thread; answers
/// from memory.
class EnvironmentSource {
 public:
  virtual ~EnvironmentSource() = default;
  /// Absent when the variable is not set.
  virtual std::optional<std::string> variable(std::string_view name) = 0;
  /// The `machine` field of uname(2), for example "x86_64".
  virtual std::string machine() = 0;
};

}  // namespace quorvance

#pragma GCC visibility pop
