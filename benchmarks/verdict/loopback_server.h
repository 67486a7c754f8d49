#pragma once

#include <sys/types.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <string>

namespace quorvance {

/// What the server's process shows to the benchmark: in memory that both share.
struct ServerNotes {
  std::atomic<int> port{0};
  /// Whether the configuration that it gives has the manager's operations and the requests traced.
  std::atomic<bool> isTraced{false};
  std::atomic<int> configurations{0};
  std::atomic<int> sessions{0};
  /// The last request for a verdict.
  std::atomic<std::size_t> bodySize{0};
  std::array<char, 32768> body{};
};

/// A server on the loopback that does as little as one can for a request: one process, one thread,
/// one wait. It answers each path with a text of its own, in the order of the requests. Its process
/// ends with the object.
class LoopbackServer {
 public:
  /// On the first so many processors.
  explicit LoopbackServer(int processors);
  ~LoopbackServer();
  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  ServerNotes& notes() const { return *notes_; }
  /// Ends in a slash.
  std::string url() const;
  /// Waits until a configuration and a session have been answered.
  void awaitStart() const;
  std::string lastBody() const { return {notes_->body.data(), notes_->bodySize.load()}; }

 private:
  ServerNotes* notes_ = nullptr;
  pid_t process_ = -1;
};

}  // namespace quorvance
