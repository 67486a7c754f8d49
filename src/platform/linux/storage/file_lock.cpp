#include "platform/linux/storage/file_lock.h"

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/linux/threads/library_thread.h"

namespace quorvance {
namespace {

using LockOutcome = FileLock::Outcome;

LockOutcome lockNow(int file, int operation) {
  int result = flock(file, operation);
  while (result != 0 && errno == EINTR) result = flock(file, operation);
  if (result == 0) return LockOutcome::held;
  return errno == EWOULDBLOCK ? LockOutcome::heldElsewhere : LockOutcome::impossible;
}

/// The lock of such a file keeps off nobody who comes later.
bool isRemoved(const FileDescriptor& file) {
  struct stat status = {};
  return fstat(file.number(), &status) == 0 && status.st_nlink == 0;
}

/// Removals come one by one, when somebody erases all data.
constexpr int kMaxRemovals = 3;

/// A wait that its thread may have to finish alone; it then gives the lock back.
struct LockWait {
  FileDescriptor file;
  std::mutex mutex;
  std::condition_variable changed;
  LockOutcome outcome = LockOutcome::heldElsewhere;
  bool isAbandoned = false;
};

void waitForLock(LockWait& wait) {
  const LockOutcome outcome = lockNow(wait.file.number(), LOCK_EX);
  const std::lock_guard lock(wait.mutex);
  if (wait.isAbandoned) {
    flock(wait.file.number(), LOCK_UN);
    return;
  }
  wait.outcome = outcome;
  wait.changed.notify_one();
}

LockOutcome lockWithin(FileDescriptor& file, std::chrono::milliseconds timeout) {
  const auto wait = std::make_shared<LockWait>();
  wait->file = std::move(file);
  LibraryThread thread;
  if (!thread.start("qv-lock", [wait] { waitForLock(*wait); })) return LockOutcome::heldElsewhere;
  thread.detach();
  std::unique_lock lock(wait->mutex);
  wait->changed.wait_for(lock, timeout,
                         [&] { return wait->outcome != LockOutcome::heldElsewhere; });
  if (wait->outcome == LockOutcome::heldElsewhere) {
    wait->isAbandoned = true;
  } else {
    file = std::move(wait->file);
  }
  return wait->outcome;
}

}  // namespace

FileLock::FileLock(const std::string& path, std::chrono::milliseconds timeout)
    : process_(getpid()) {
  for (int i = 0; i <= kMaxRemovals; ++i) {
    file_ = openLockFile(path);
    if (!file_.isOpen()) return;
    outcome_ = lockNow(file_.number(), LOCK_EX | LOCK_NB);
    if (outcome_ == LockOutcome::heldElsewhere && timeout > timeout.zero()) {
      outcome_ = lockWithin(file_, timeout);
    }
    if (outcome_ != LockOutcome::held || !isRemoved(file_)) return;
  }
}

// A fork of the host has a copy of the descriptor: closing ours would leave the lock with it, and
// what the fork destroys must not release ours.
FileLock::~FileLock() {
  if (outcome_ == LockOutcome::held && process_ == getpid()) flock(file_.number(), LOCK_UN);
}

}  // namespace quorvance
