#pragma once

namespace quorvance {

/// Initialises libcurl, once a process, so that a normal end of the process finds the calling
/// thread out of it. False when that failed; the next call tries again. Never undone: the host may
/// use the library too. Not the host's threads.
bool openCurlLibrary();

/// Frees what the TLS library keeps for the calling thread, which will not use it any more. By
/// itself that happens when the thread has ended, and nobody knows when that is.
void leaveCurlLibrary();

}  // namespace quorvance
