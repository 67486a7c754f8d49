#pragma once

#include <cstddef>
#include <string>

#include "quorvance/platform_error.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// The library's only error: setup was given an empty server URL.
class QuorvanceError {
 public:
  enum class Case { message };

  Case kind = Case::message;

  /// Always "serverUrl can't be empty".
  static std::string description();
  /// As the host receives it: domain "QuorvanceError", code 0, the description.
  static PlatformError platformError();

  /// All values are equal and hash alike.
  friend bool operator==(const QuorvanceError&, const QuorvanceError&) { return true; }
  std::size_t hash() const { return 0; }
};

}  // namespace quorvance

#pragma GCC visibility pop
