#pragma once

#include <string_view>

namespace quorvance {

/// The process-wide debug switch; any thread.
bool isInDebugMode() noexcept;
void setIsInDebugMode(bool on) noexcept;

/// Takes whole lines without their line end; may be called from several threads at once.
using DebugSink = void (*)(std::string_view line);

/// Where debug lines go: standard output until a sink is set; null restores that.
void setDebugSink(DebugSink sink) noexcept;

/// Prints the line in debug mode, otherwise does nothing. Callers whose line is dear to build ask
/// isInDebugMode() first.
void debugPrint(std::string_view line);

}  // namespace quorvance
