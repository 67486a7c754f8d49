#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>

#include "platform/linux/storage/private_files.h"

namespace quorvance {

/// How long the file lane waits for a process that has a lock: one that is stopped has it for as
/// long as it pleases.
inline constexpr std::chrono::seconds kMaxLockWait{1};

/// The exclusive lock of a side file, which is made when missing; whoever removes it holds it, and
/// whoever has waited for a removed one begins anew. It excludes other processes and other locks of
/// this one, and is held until its end. A process that dies lets it go; of one that forks, the
/// child's copy neither holds nor releases it once the parent has released it. Not thread-safe.
class FileLock {
 public:
  enum class Outcome {
    held,
    /// Somebody else has had it for the whole time.
    heldElsewhere,
    /// The file cannot be made, or its file system has no locks.
    impossible,
  };

  /// Waits for at most `timeout`, while somebody else has the lock on a thread "qv-lock": the
  /// kernel's own wait misses no release but has no end when the other one is stopped.
  FileLock(const std::string& path, std::chrono::milliseconds timeout);
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  Outcome outcome() const { return outcome_; }

 private:
  FileDescriptor file_;
  pid_t process_ = 0;
  Outcome outcome_ = Outcome::impossible;
};

}  // namespace quorvance
