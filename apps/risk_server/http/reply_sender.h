// Sends a reply the slow or broken way that its delivery asks for.
#pragma once

#include <string_view>

#include "apps/risk_server/http/client_connection.h"
#include "apps/risk_server/http/reply_delivery.h"

namespace risk_server {

// `reply` is the whole reply, head and body. Blocks as long as the delivery takes; returns early
// when the client is gone or reading was ended. Afterwards the connection knows whether it is to be
// closed or reset.
Delivery sendReply(ClientConnection& connection, std::string_view reply,
                   const ReplyDelivery& delivery);

}  // namespace risk_server
