#pragma once

#include <cstdint>
#include <span>

namespace quorvance {

/// Fills the span with bytes of the system's own generator. A thread may have fetched some
/// beforehand; no fork of the process has the same ones. Ends the process when the system gives
/// none. Any thread. Defined by the platform that is linked.
void fillWithRandomBytes(std::span<std::uint8_t> bytes);

}  // namespace quorvance
