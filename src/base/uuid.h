#pragma once

#include <string>

namespace quorvance {

/// A new random UUID (RFC 4122, version 4) as canonical upper-case text.
std::string randomUuid();

}  // namespace quorvance
