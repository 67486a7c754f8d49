#pragma once

#include <cstdint>
#include <span>

namespace quorvance {

/// Fills the span from the system's own generator, not from one of the process: what is made of it
/// stays unique after a fork. Ends the process when the system gives none. Any thread. Defined by
/// the platform that is linked.
void fillWithRandomBytes(std::span<std::uint8_t> bytes);

}  // namespace quorvance
