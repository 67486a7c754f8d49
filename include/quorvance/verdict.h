#pragma once

#include "quorvance/standard_library.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "quorvance/risk.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// What became of a call to the server. Further reasons may come.
enum class VerdictReason {
  /// The server's reply was understood. Of a verdict: it holds a level of the vocabulary.
  answered,
  /// A reply of status 200 that holds no verdict: no JSON, no level, or a level that nobody knows.
  unreadable,
  /// The server answered with another status than 200.
  refused,
  /// The deadline came first, or the time-out of the exchange: 5 s, until the server's
  /// configuration
  /// tells another one.
  timedOut,
  /// No connection, or one that broke off; a TLS handshake that failed but for its certificate.
  unreachable,
  /// The server's certificate has expired, is another host's, or is of an unknown authority.
  certificate,
  /// The URL cannot be sent to, the body cannot be JSON, too many calls wait, the host's HTTP
  /// options cannot be used, or its beforeSend has kept the call back.
  cannotBeSent,
  /// There was no server URL yet.
  notSetUp,
  /// The manager has been shut down.
  shutDown,
  /// The host had switched collection off. A call that was on its way then is given up.
  collectionOff,
  /// Given up within the library: no memory, or the queues ended.
  givenUp,
};

/// Its name as it stands above, for logs; never changes. Empty for a number outside of it.
std::string_view toString(VerdictReason reason);

struct VerdictOptions {
  /// When the completion comes at the latest, from the call (with an HttpSession of the host's own
  /// that keeps no time, as soon as the main queue runs); the exchange goes on all the same. 0 and
  /// less mean at once: the checkpoint is reported and nobody waits. Absent, and when longer than
  /// the exchange may take, that one's own time-out stands alone: it is never lengthened.
  std::optional<std::chrono::milliseconds> deadline;
};

/// A verdict, or why there is none.
struct Verdict {
  /// Level "undefined" unless the server told one.
  Risk risk;
  /// The same signed by the server; "-1" when there is none.
  std::string signedRisk = "-1";
  /// Under which the outcome is reported later; empty when no call was made.
  std::string requestID;
  VerdictReason reason = VerdictReason::givenUp;
  /// Of the server's reply; absent when none came.
  std::optional<int> httpStatus;
  /// From the call until the completion was called, on a monotonic clock.
  std::chrono::milliseconds elapsed{0};
};

/// Runs once, on a background thread of the library; as RiskCompletion otherwise.
using VerdictCompletion = std::function<void(Verdict verdict)>;

}  // namespace quorvance

#pragma GCC visibility pop
