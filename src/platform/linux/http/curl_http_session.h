#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "platform/linux/threads/thread_retries.h"
#include "platform/linux/threads/wake_ups.h"
#include "quorvance/platform/http.h"
#include "quorvance/platform/http_options.h"

namespace quorvance {

/// HTTP and HTTPS over one thread, with kept connections.
///
/// The thread starts with the first use; when the system has no thread or no descriptor to give,
/// everything waits, and `retries` or the next use tries again. What there is no memory for is
/// dropped, its completion too. At most kMaxInFlight exchanges run, each on a
/// connection of its own; more wait for their turn, and a time-out counts from it. Destroying the
/// session drops every completion that waits, breaks off what is in flight and waits for the
/// thread, except on the thread itself. When the process ends normally the thread comes to rest out
/// of libcurl, whose TLS library then cleans up, and nothing more happens. Any thread; guarded by
/// the state's mutex.
class CurlHttpSession : public HttpSession {
 public:
  static constexpr std::size_t kMaxInFlight = 32;
  /// Beyond so many waiting requests a further one ends at once with a transport error.
  static constexpr std::size_t kMaxWaiting = 1024;

  /// A connection that nothing has used for so long is closed.
  static constexpr std::chrono::milliseconds kMaxIdleTime{60'000};

  /// `wakeUps`: of the queue to which completions post; what one turn of the network has brought
  /// wakes it once.
  explicit CurlHttpSession(
      HttpOptions options = {},
      std::shared_ptr<ThreadRetries> retries = std::make_shared<ThreadRetries>(),
      std::weak_ptr<WakeUps> wakeUps = {}, std::chrono::milliseconds maxIdleTime = kMaxIdleTime);
  ~CurlHttpSession() override;
  CurlHttpSession(const CurlHttpSession&) = delete;
  CurlHttpSession& operator=(const CurlHttpSession&) = delete;

  void dispatch(Task task) override;
  void send(HttpRequest request, HttpCompletion completion) override;
  /// Never false. What waits is dropped without memory, and at the end of the session.
  bool dispatchAfter(std::chrono::milliseconds delay, Task task) override;

 private:
  struct State;
  class Worker;

  // Shared with the thread, which may outlive the session.
  std::shared_ptr<State> state_;
};

}  // namespace quorvance
