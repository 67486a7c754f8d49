// How a reply travels, beside what it says.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace risk_server {

// The longest that a reply is held back, slowed down or withheld before its connection is closed.
inline constexpr std::chrono::minutes kMaxReplyHold{10};

enum class Transfer {
  kWhole,
  kTrickle,       // the head at once, the body little by little
  kCutThenClose,  // a part of the body, then the connection ends
  kCutThenReset,  // a part of the body, then the connection is reset
  kClose,         // nothing, the connection ends
  kReset,         // nothing, the connection is reset
  kHang,          // nothing, and the connection stays
};

struct ReplyDelivery {
  std::chrono::milliseconds latency{0};  // before anything else happens
  Transfer transfer = Transfer::kWhole;
  std::size_t bodyBytes = 0;       // cut: what goes out of the body, which always has more
  std::size_t bytesPerSecond = 1;  // trickle

  bool isPlain() const { return latency.count() == 0 && transfer == Transfer::kWhole; }
  bool sendsNothing() const {
    return transfer == Transfer::kClose || transfer == Transfer::kReset ||
           transfer == Transfer::kHang;
  }
  bool cutsBody() const {
    return transfer == Transfer::kCutThenClose || transfer == Transfer::kCutThenReset;
  }
};

// How a reply went out in the end.
enum class Delivery {
  kWhole,
  kCut,         // a part of it, then the connection was closed
  kReset,       // a part of it or nothing, then the connection was reset
  kClosed,      // nothing, then the connection was closed
  kClientLeft,  // the client did not wait for it, or took it not to its end
};

constexpr const char* wordOf(Delivery delivery) {
  constexpr const char* kWords[] = {"whole", "cut", "reset", "closed", "clientLeft"};
  return kWords[static_cast<std::size_t>(delivery)];
}

using HttpHeaders = std::vector<std::pair<std::string, std::string>>;

}  // namespace risk_server
