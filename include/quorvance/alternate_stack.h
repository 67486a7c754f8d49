#pragma once

#include "quorvance/standard_library.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// Gives the calling thread an alternate signal stack, so that an overflow of its own stack can be
/// caught and reported: 64 KiB with a guard page, freed when the thread ends. One that is there and
/// large enough is kept.
///
/// Every operation of QuorvanceManager but its flags does this for the thread that calls it.
/// Threads that never call the library need this call once, early in their life. Cheap to repeat;
/// without memory it does nothing. Not for signal handlers.
void ensureAlternateStack() noexcept;

}  // namespace quorvance

#pragma GCC visibility pop
