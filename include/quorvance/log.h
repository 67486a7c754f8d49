#pragma once

#include "quorvance/standard_library.h"

#include <functional>
#include <string_view>

#pragma GCC visibility push(default)

namespace quorvance {

enum class LogLevel {
  /// The diagnostic lines of the debug mode; there are none outside of it.
  debug,
  /// Something that works, and that a review would ask about.
  warning,
  /// Something that the host has asked for and does not get.
  error,
};

/// Takes one line without its line end.
using LogSink = std::function<void(LogLevel level, std::string_view line)>;

/// Where lines go from now on, one sink for the process; null stands for the console, which is the
/// default and prints lines of every level in debug mode alone. A sink gets warnings and errors
/// always.
///
/// Called from any thread. The sink runs on a thread of the library, line after line, never under a
/// lock of the library's and never inside the call that the line is about; successive lines may
/// come on different threads. What it throws is dropped. What it makes the library print on its own
/// thread is dropped as well, so that it cannot feed itself. A sink that does not return holds up
/// nobody: a thousand lines wait, further ones are dropped and counted.
///
/// Returns at once: a line may be on its way to the former sink, which is destroyed after that.
/// What a sink refers to must outlive it; at the end of the process it is not destroyed, so that
/// one which refers to static objects is to be replaced before. Without memory, and in a forked
/// child, nothing changes. Throws nothing.
void setLogSink(LogSink sink) noexcept;

}  // namespace quorvance

#pragma GCC visibility pop
