#pragma once

#include <chrono>
#include <cstddef>
#include <string_view>

#include "quorvance/log.h"

namespace quorvance {

/// The process-wide debug switch; any thread.
bool isInDebugMode() noexcept;
void setIsInDebugMode(bool on) noexcept;

/// Takes whole lines without their line end, on the thread that prints them; may be called from
/// several threads at once.
using DebugSink = void (*)(std::string_view line);

/// Where debug lines go: the console, or the host's sink, until a sink is set here; null restores
/// that.
void setDebugSink(DebugSink sink) noexcept;

/// Prints the line in debug mode, otherwise does nothing. Callers whose line is dear to build ask
/// isInDebugMode() first. Never waits for the console, and throws nothing.
void debugPrint(std::string_view line, LogLevel level = LogLevel::debug) noexcept;

/// A line for the host, whatever the mode: its sink gets it always, the console in debug mode
/// alone. Never waits, and throws nothing.
void logMessage(LogLevel level, std::string_view line) noexcept;

/// Lines that wait for a console that nobody reads: at most so many, and of so many bytes (one of
/// the longest reply fits). What comes on top is dropped, counted, and told of in its place once
/// the console takes lines again.
inline constexpr std::size_t kMaxWaitingDebugLines = 1000;
inline constexpr std::size_t kMaxWaitingDebugBytes = 16UL * 1024 * 1024;

/// Waits until the console has what was printed, or until the deadline; true when it has. At the
/// end of a process.
bool flushDebugOutput(std::chrono::steady_clock::time_point deadline) noexcept;

}  // namespace quorvance
