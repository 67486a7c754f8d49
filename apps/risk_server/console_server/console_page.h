// The console's page as files, from what is built into the server.
#pragma once

#include "apps/risk_server/http/http_listener.h"

namespace risk_server {

// "/" is index.html; 404 for what is no file of the page.
HttpReply consolePage(const HttpRequest& request);

}  // namespace risk_server
