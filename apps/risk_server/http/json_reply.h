// The usual replies of the risk server.
#pragma once

#include <string>

#include "apps/risk_server/http/http_listener.h"
#include "apps/risk_server/server_json.h"

namespace risk_server {

HttpReply jsonReply(const Json& body);

// {"response": ...}
HttpReply acceptedReply(const Json& response);

// {"error": fault}; `allow` is the Allow header.
HttpReply refusedReply(int status, const std::string& fault, const std::string& allow = {});

}  // namespace risk_server
