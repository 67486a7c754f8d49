#include "apps/risk_server/http/request_guard.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <array>

#include "apps/risk_server/http/json_reply.h"
#include "apps/risk_server/http/text_codecs.h"

namespace risk_server {
namespace {

constexpr std::array<std::string_view, 2> kLoopbackHosts = {"127.0.0.1", "localhost"};
constexpr int kHttpPort = 80;
constexpr std::string_view kBearer = "Bearer ";

// What the page does without is switched off; its parts come from its own origin alone.
constexpr const char* kContentPolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src 'self' "
    "data:; "
    "frame-ancestors 'none'; base-uri 'none'; form-action 'none'; require-trusted-types-for "
    "'script'; "
    "trusted-types 'none'";

bool hasEqualBytes(std::string_view one, std::string_view other) {
  return one.size() == other.size() && CRYPTO_memcmp(one.data(), other.data(), one.size()) == 0;
}

std::string pathOf(const std::string& target) {
  return target.substr(0, target.find_first_of("?#"));
}

}  // namespace

bool RequestGuard::isOwnHost(const std::string& host, int port) const {
  const auto is = [&](std::string_view name) {
    const std::string withPort = std::string(name) + ":" + std::to_string(port);
    return host == withPort || (port == kHttpPort && host == name);
  };
  return std::any_of(kLoopbackHosts.begin(), kLoopbackHosts.end(), is) ||
         std::any_of(options_.moreHosts.begin(), options_.moreHosts.end(), is);
}

std::optional<std::string> RequestGuard::faultOfOrigin(const HttpRequest& request, int port) const {
  if (!isPlainPath(request.target))
    return "the path: escapes, doubled slashes and dots are not expected here";
  const auto hosts = request.headersNamed("Host");
  if (hosts.size() != 1 || !isOwnHost(hosts.front(), port)) {
    return "Host: only 127.0.0.1 and localhost with the server's own port are served";
  }
  for (const std::string& origin : request.headersNamed("Origin")) {
    if (origin != "http://" + hosts.front())
      return "Origin: pages of another origin are not served";
  }
  for (const std::string& site : request.headersNamed("Sec-Fetch-Site")) {
    if (site != "same-origin" && site != "none")
      return "Sec-Fetch-Site: pages of another site are not served";
  }
  return std::nullopt;
}

std::optional<HttpReply> RequestGuard::refusalOfOrigin(const HttpRequest& request, int port) const {
  const auto fault = faultOfOrigin(request, port);
  if (!fault) return std::nullopt;
  HttpReply reply = refusedReply(403, *fault);
  addSecurityHeaders(reply);
  return reply;
}

std::optional<HttpReply> RequestGuard::refusalOfToken(const HttpRequest& request) const {
  if (options_.token.empty()) return std::nullopt;
  const auto given = request.headersNamed("Authorization");
  if (given.size() == 1 && hasEqualBytes(given.front(), std::string(kBearer) + options_.token))
    return std::nullopt;
  HttpReply reply = refusedReply(401, "Authorization: the token of --console-token is expected");
  reply.headers.emplace_back("WWW-Authenticate", "Bearer");
  addSecurityHeaders(reply);
  return reply;
}

bool leadsBelow(const std::string& target, const std::string& name) {
  const std::string path = squeezeSlashes(percentDecode(pathOf(target)));
  return path == "/" + name || path.starts_with("/" + name + "/");
}

bool isPlainPath(const std::string& target) {
  const std::string path = pathOf(target);
  const bool hasOddities =
      path.find_first_of("%\\") != std::string::npos || path.find("//") != std::string::npos;
  // A segment that begins with a dot names no file and no operation of this server.
  return path.starts_with('/') && !hasOddities && path.find("/.") == std::string::npos;
}

void addSecurityHeaders(HttpReply& reply) {
  reply.headers.emplace_back("Content-Security-Policy", kContentPolicy);
  reply.headers.emplace_back("X-Content-Type-Options", "nosniff");
  reply.headers.emplace_back("Referrer-Policy", "no-referrer");
  reply.headers.emplace_back("Cache-Control", "no-store");
}

}  // namespace risk_server
