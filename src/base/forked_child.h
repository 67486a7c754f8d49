#pragma once

namespace quorvance {

// Both are defined by the platform that is linked; one without forks answers false.

/// Begins to watch for forks of this process; once is enough, more does nothing.
void watchForForks() noexcept;

/// Whether this process is a fork of one that had the library in use: its threads are gone and its
/// locks may be held by nobody, so the library does nothing there. Any thread.
bool isForkedChild() noexcept;

}  // namespace quorvance
