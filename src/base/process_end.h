#pragma once

namespace quorvance {

/// Whether this process ends normally, and the library's exit handlers have begun to bring it to
/// rest: what is still pending then stays so. Any thread. Defined by the platform that is linked;
/// one without exit handlers answers false.
bool hasProcessExitBegun() noexcept;

}  // namespace quorvance
