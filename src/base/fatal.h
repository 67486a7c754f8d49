#pragma once

#include <string_view>

namespace quorvance {

/// Ends the process on a programming error, after saying on standard error what was violated.
[[noreturn]] void fatalError(std::string_view violation) noexcept;

}  // namespace quorvance
