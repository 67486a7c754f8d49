// Faults on demand: what goes wrong, and for which calls.
//
// fault_reader.h explains how they are written, fault_list.h decides to which calls they are
// applied.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>

#include "apps/risk_server/http/http_listener.h"
#include "apps/risk_server/server_json.h"

namespace risk_server {

inline constexpr const char* kEveryPath = "*";
inline constexpr std::uint64_t kUnlimited = std::numeric_limits<std::uint64_t>::max();

// A value, complete once read.
struct Fault {
  Json given;        // as it was written
  std::string name;  // in the log

  // To which calls it is applied.
  std::string path = kEveryPath;  // the full path, or kEveryPath
  bool atAccept = false;          // connections instead of calls; nothing else is done to them
  std::uint64_t skip = 0;
  std::uint64_t first = kUnlimited;
  std::uint64_t times = kUnlimited;

  // What it does. What is left out stays as it would have been.
  std::optional<int> status;
  HttpHeaders headers;
  std::function<std::string()> body;
  ReplyDelivery delivery;
};

// Whether replies of the status have no body (RFC 9110).
bool statusForbidsBody(int status);

// The reply as the fault makes it of the normal one. A reply with another body has status 200,
// unless the fault says which.
HttpReply replyUnderFault(const Fault& fault, HttpReply normal);

}  // namespace risk_server
