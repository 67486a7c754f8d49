#pragma once

#include <string_view>

namespace quorvance {

// What debug output needs of the system; each platform has its own.

/// Writes all of the text to standard output; waits as long as its reader does not read. What
/// cannot be written is lost.
void writeToConsole(std::string_view text) noexcept;

/// Runs `body` on a thread of the library; false when the system gives none. `body` throws nothing.
bool startConsoleThread(void (*body)()) noexcept;

}  // namespace quorvance
