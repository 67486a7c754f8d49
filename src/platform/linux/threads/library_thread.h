#pragma once

#include <functional>
#include <memory>

namespace quorvance {

/// A thread of the library inside a host's process: it takes none of the process's asynchronous
/// signals, and faults of its own are handled on an alternate signal stack.
///
/// Nobody ever joins one: what the host's code leaves on it, thread-local objects above all, is
/// destroyed after the body has returned and may take as long as it likes. Not thread-safe: guarded
/// by its owner.
class LibraryThread {
 public:
  LibraryThread() = default;
  LibraryThread(const LibraryThread&) = delete;
  LibraryThread& operator=(const LibraryThread&) = delete;

  /// False when the system has no thread or no memory to give; `body` is then dropped. The name has
  /// at most 15 characters. An earlier thread must have been finished or detached.
  bool start(const char* name, std::function<void()> body) noexcept;
  /// Started and neither finished nor detached.
  bool isStarted() const { return run_ != nullptr; }
  /// Whether the caller runs on this thread.
  bool isCurrent() const;
  /// Waits until the body has returned and is destroyed. On the thread itself, in a forked child,
  /// which does not have the thread, and at the end of the process, where a thread may have come to
  /// rest for ever, detaches instead.
  void finish();
  /// Waits for nothing: the thread runs on by itself.
  void detach() { run_.reset(); }

 private:
  struct Run;

  // Shared with the thread.
  std::shared_ptr<Run> run_;
};

}  // namespace quorvance
