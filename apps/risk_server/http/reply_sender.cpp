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
        !connection.sendAll(body.substr(sent, piece))) {
      return false;
    }
  }
  return true;
}

bool sendPart(ClientConnection& connection, std::string_view head, std::string_view body,
              std::size_t bodyBytes) {
  const std::size_t most = body.empty() ? 0 : body.size() - 1;
  return connection.sendAll(head) && connection.sendAll(body.substr(0, std::min(bodyBytes, most)));
}

}  // namespace

void sendReply(ClientConnection& connection, std::string_view reply,
               const ReplyDelivery& delivery) {
  const std::string_view head = reply.substr(0, headBytes(reply));
  const std::string_view body = reply.substr(head.size());
  bool keeps = false;
  bool resets = false;
  if (connection.pauseUntil(Clock::now() + delivery.latency)) {
    switch (delivery.transfer) {
      case Transfer::kWhole:
        keeps = connection.sendAll(reply);
        break;
      case Transfer::kTrickle:
        keeps = connection.sendAll(head) && trickleBody(connection, body, delivery.bytesPerSecond);
        break;
      case Transfer::kCutThenClose:
        sendPart(connection, head, body, delivery.bodyBytes);
        break;
      case Transfer::kCutThenReset:
        resets = sendPart(connection, head, body, delivery.bodyBytes);
        break;
      case Transfer::kClose:
        break;
      case Transfer::kReset:
        resets = true;
        break;
      case Transfer::kHang:
        (void)connection.pauseUntil(Clock::now() + kMaxReplyHold);
        break;
    }
  }
  if (resets) connection.resetWhenClosed();
  if (!keeps) connection.closeAfterReply();
}

}  // namespace risk_server
