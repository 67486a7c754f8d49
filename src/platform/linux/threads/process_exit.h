#pragma once

#include <chrono>
#include <memory>

#include "base/process_end.h"

namespace quorvance {

/// How long a normal end of the process may be held up by the library, all in all.
inline constexpr std::chrono::milliseconds kMaxExitDelay{500};

/// What must come to rest before a normal end of the process goes on.
class ExitParticipant {
 public:
  virtual ~ExitParticipant() = default;
  /// Asks for rest and returns at once; may come again. The exiting thread, which may be one of the
  /// library's own.
  virtual void beginExit() noexcept = 0;
  /// Waits for what was asked for, until `deadline` at most.
  virtual void awaitExit(std::chrono::steady_clock::time_point deadline) noexcept = 0;
};

/// Has the participant asked and waited for when the process ends normally: by a return from `main`
/// or by `exit`, not by `_exit` or `quick_exit`, and not in a forked child. Each exit handler that
/// the library has registered does so in turn, within kMaxExitDelay in all; nothing is joined.
/// False when the end has begun, too late to start anything, or when there is no memory. Any
/// thread.
bool joinProcessExit(std::weak_ptr<ExitParticipant> participant) noexcept;

/// Registers one more exit handler. Handlers run in the reverse order of their registration, so
/// this one runs before those of the libraries that were initialised by now.
void registerExitHandler() noexcept;

/// The handler itself, for libraries that have an end of their own.
void handleProcessExit() noexcept;

}  // namespace quorvance
