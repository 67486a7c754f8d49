#include "apps/risk_server/console_server/console_page.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "apps/risk_server/embedded_files.h"
#include "apps/risk_server/http/json_reply.h"
#include "apps/risk_server/http/request_target.h"

namespace risk_server {
namespace {

constexpr std::array<std::pair<std::string_view, const char*>, 5> kContentTypes = {{
    {".html", "text/html; charset=utf-8"},
    {".js", "text/javascript; charset=utf-8"},
    {".css", "text/css; charset=utf-8"},
    {".svg", "image/svg+xml"},
    {".txt", "text/plain; charset=utf-8"},
}};

const char* contentTypeOf(std::string_view path) {
  for (const auto& [ending, type] : kContentTypes) {
    if (path.ends_with(ending)) return type;
  }
  return "application/octet-stream";
}

}  // namespace

HttpReply consolePage(const HttpRequest& request) {
  if (!request.fault.empty()) return refusedReply(request.faultStatus, request.fault);
  if (request.method != "GET" && request.method != "HEAD") {
    return refusedReply(405, "only GET is expected", "GET, HEAD");
  }
  std::string path = pathOfTarget(request.target).substr(1);
  if (path.empty()) path = "index.html";
  const auto& files = embeddedConsole();
  const auto file = std::find_if(files.begin(), files.end(),
                                 [&](const EmbeddedFile& f) { return f.path == path; });
  if (file == files.end()) return refusedReply(404, "no page here");
  HttpReply reply;
  reply.body = file->text;
  reply.headers.emplace_back("Content-Type", contentTypeOf(path));
  return reply;
}

}  // namespace risk_server
