#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "quorvance/platform/queues.h"
#include "quorvance/platform_error.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// One POST. The session adds Host and Content-Length and no other header.
struct HttpRequest {
  std::string url;
  std::string contentType;
  std::string body;
  /// Bounds the whole exchange, from the start of the connection to the last byte of the reply;
  /// waiting for a turn does not count. 0 and less mean 60 s.
  std::chrono::milliseconds timeout{60'000};
};

/// Why no whole reply came.
enum class TransportFault {
  /// No connection, or one that broke off.
  unreachable,
  timedOut,
  /// The server's certificate was not accepted.
  certificate,
  /// It was never tried: the URL cannot be sent to, or the session has no room.
  notSent,
};

/// What came of a request: a transport error, or a status with a body (an empty one included).
struct HttpReply {
  std::optional<PlatformError> transportError;
  /// Also set beside a transport error when the reply broke off after its head.
  std::optional<int> status;
  /// Only a reply that came whole has a body.
  std::optional<std::string> body;
  /// Beside a transport error.
  TransportFault fault = TransportFault::unreachable;
};

using HttpCompletion = std::function<void(HttpReply)>;

/// Sends requests, several at a time, each at most once: a request whose connection dies unanswered
/// is a transport error and is never repeated. So is a URL with a user name, which would go out as
/// a header. All of a session's work happens on one thread of its own. Called from any thread;
/// returns at once, never throws: what there is no memory for is dropped, outside of all locks.
class HttpSession {
 public:
  virtual ~HttpSession() = default;
  /// Runs the task on the session's thread, after what was dispatched before.
  virtual void dispatch(Task task) = 0;
  /// Runs `completion` exactly once on the session's thread, never inside the call. A session that
  /// is destroyed drops the completions that wait.
  virtual void send(HttpRequest request, HttpCompletion completion) = 0;

  // What a host's own session may leave as it is.

  /// Runs the task on the session's thread when `delay` has passed on a monotonic clock. False, and
  /// nothing happens, where the session keeps no time: the main queue is then asked.
  virtual bool dispatchAfter(std::chrono::milliseconds delay, Task task);
};

}  // namespace quorvance

#pragma GCC visibility pop
