#include "apps/risk_server/http/reply_sender.h"

#include <algorithm>

namespace risk_server {
namespace {

using Clock = std::chrono::steady_clock;

// Faster than this many pieces a second, the pieces grow.
constexpr std::size_t kTricklePiecesPerSecond = 10;
constexpr std::string_view kEndOfHead = "\r\n\r\n";

std::size_t headBytes(std::string_view reply) {
  const auto end = reply.find(kEndOfHead);
  return end == std::string_view::npos ? reply.size() : end + kEndOfHead.size();
}

// Each piece has its own due time, so that late pieces do not delay all that follow.
bool trickleBody(ClientConnection& connection, std::string_view body, std::size_t bytesPerSecond) {
  const std::size_t piece = std::max<std::size_t>(1, bytesPerSecond / kTricklePiecesPerSecond);
  const Clock::time_point begin = Clock::now();
  for (std::size_t sent = 0; sent < body.size(); sent += piece) {
    const std::chrono::duration<double> due(static_cast<double>(sent) /
                                            static_cast<double>(bytesPerSecond));
    if (due > kMaxReplyHold) return false;
    if (!connection.pauseUntil(begin + std::chrono::duration_cast<Clock::duration>(due)) ||
        !connection.send(body.substr(sent, piece))) {
      return false;
    }
  }
  return true;
}

bool sendPart(ClientConnection& connection, std::string_view head, std::string_view body,
              std::size_t bodyBytes) {
  const std::size_t most = body.empty() ? 0 : body.size() - 1;
  return connection.send(head) && connection.send(body.substr(0, std::min(bodyBytes, most)));
}

}  // namespace

Delivery sendReply(ClientConnection& connection, std::string_view reply,
                   const ReplyDelivery& delivery) {
  const std::string_view head = reply.substr(0, headBytes(reply));
  const std::string_view body = reply.substr(head.size());
  Delivery sent = Delivery::kClosed;
  if (connection.pauseUntil(Clock::now() + delivery.latency)) {
    switch (delivery.transfer) {
      case Transfer::kWhole:
        if (connection.send(reply)) sent = Delivery::kWhole;
        break;
      case Transfer::kTrickle:
        if (connection.send(head) && trickleBody(connection, body, delivery.bytesPerSecond)) {
          sent = Delivery::kWhole;
        }
        break;
      case Transfer::kCutThenClose:
        if (sendPart(connection, head, body, delivery.bodyBytes)) sent = Delivery::kCut;
        break;
      case Transfer::kCutThenReset:
        if (sendPart(connection, head, body, delivery.bodyBytes)) sent = Delivery::kReset;
        break;
      case Transfer::kClose:
        break;
      case Transfer::kReset:
        sent = Delivery::kReset;
        break;
      case Transfer::kHang:
        (void)connection.pauseUntil(Clock::now() + kMaxReplyHold);
        break;
    }
  }
  if (sent == Delivery::kReset) connection.resetWhenClosed();
  if (sent != Delivery::kWhole) connection.closeAfterReply();
  return connection.clientLeft() ? Delivery::kClientLeft : sent;
}

}  // namespace risk_server
