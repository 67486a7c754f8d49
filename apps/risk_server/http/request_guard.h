// Who may use the console and the control path: programs on this machine and the console's own
// page, but no page of another origin that a browser on this machine has open.
//
// A browser tells where a request comes from; a program such as curl sends none of these headers
// and passes. Host is checked too, since a foreign name may be made to resolve to 127.0.0.1, and
// its page would then be of this origin.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "apps/risk_server/http/http_listener.h"

namespace risk_server {

struct GuardOptions {
  std::vector<std::string> moreHosts;  // names beside 127.0.0.1 and localhost
  std::string token;  // asked for as "Authorization: Bearer TOKEN"; none when empty
};

// Immutable: any thread.
class RequestGuard {
 public:
  explicit RequestGuard(GuardOptions options) : options_(std::move(options)) {}

  // The reply that refuses a request that came to `port`; nothing when it may pass.
  std::optional<HttpReply> refusalOfOrigin(const HttpRequest& request, int port) const;
  // As above, of one without the token.
  std::optional<HttpReply> refusalOfToken(const HttpRequest& request) const;

 private:
  std::optional<std::string> faultOfOrigin(const HttpRequest& request, int port) const;
  bool isOwnHost(const std::string& host, int port) const;

  const GuardOptions options_;
};

// Whether the path of the target, decoded and with single slashes, lies below "/NAME". True also
// for spellings that are then to be refused, so that none of them slips through to another handler.
bool leadsBelow(const std::string& target, const std::string& name);

// Whether the path is written without escapes, doubled slashes, backslashes and dot segments.
bool isPlainPath(const std::string& target);

// What keeps a reply from being stored, guessed at, framed or made to load anything.
void addSecurityHeaders(HttpReply& reply);

}  // namespace risk_server
