// The few facts of a body by which exchanges are listed, searched and joined.
#pragma once

#include "apps/risk_server/server_json.h"

namespace risk_server {

// {"user", "device", "session", "requestID", "app", "checkpoint", "screen", "screenId", "action",
// "outcome", "updates", "transaction", "at"}, each only where the body of a call tells it; texts
// and integers as they stand, but "user" is percent-decoded. No fact is longer than kMaxFactBytes.
Json factsOf(const Json& body);

inline constexpr std::size_t kMaxFactBytes = 200;

}  // namespace risk_server
