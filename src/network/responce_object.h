#pragma once

// Talking to the risk server: one table of paths, one maker of calls, one client. Nothing here
// retries. Start reading at quorvance_network_manager.h.

#include <cstdint>
#include <optional>
#include <string>

#include "base/json.h"
#include "quorvance/platform/http.h"

namespace quorvance {

/// What came of one call (spelled so, as the interface is). It succeeded when `error` is absent.
struct ResponceObject {
  /// The caller's identifier, or the server's when the reply carries one as text.
  std::string requestId;
  std::optional<std::string> url;
  std::optional<std::int64_t> statusCode;
  /// -1 for a transport error, a status, or kParseFailureCode.
  std::optional<std::int64_t> error;
  /// Set when no whole reply came.
  std::optional<TransportFault> transportFault;
  /// The reply when it is a JSON object.
  std::optional<Json> output;

  bool succeeded() const { return !error.has_value(); }
  /// For debug output. The doubled " error: " is intended.
  std::string text() const;
};

/// `error` of a call that never got a whole reply.
inline constexpr std::int64_t kTransportErrorCode = -1;
/// `error` of a reply of status 200 that is no JSON: neither a status nor a transport error.
inline constexpr std::int64_t kParseFailureCode = 1001;

}  // namespace quorvance
