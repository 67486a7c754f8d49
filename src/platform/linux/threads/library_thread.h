#pragma once

#include <sys/types.h>

#include <functional>
#include <thread>

namespace quorvance {

/// A thread of the library inside a host's process: it takes none of the process's asynchronous
/// signals, and faults of its own are handled on an alternate signal stack.
/// Not thread-safe: guarded by its owner.
class LibraryThread {
 public:
  LibraryThread() = default;
  ~LibraryThread();
  LibraryThread(const LibraryThread&) = delete;
  LibraryThread& operator=(const LibraryThread&) = delete;

  /// False when the system has no thread or no memory to give; `body` is then dropped. The name has
  /// at most 15 characters. An earlier thread must have been finished.
  bool start(const char* name, std::function<void()> body);
  /// Started and not yet finished.
  bool isStarted() const;
  /// Whether the caller runs on this thread.
  bool isCurrent() const;
  /// Waits for the thread's end. On the thread itself, in a forked child, which does not have the
  /// thread, and at the end of the process lets it go instead.
  void finish();
  /// Waits for nothing: the thread runs on by itself.
  void letGo();

 private:
  std::thread thread_;
  pid_t process_ = 0;
};

}  // namespace quorvance
