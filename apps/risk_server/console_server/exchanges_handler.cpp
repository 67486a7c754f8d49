#include "apps/risk_server/console_server/exchanges_handler.h"

#include <utility>

#include "apps/risk_server/http/json_reply.h"
#include "apps/risk_server/http/request_target.h"

namespace risk_server {
namespace {

constexpr std::size_t kMaxFound = kMaxKeptExchanges;

HttpReply wrongMethod(const std::string& allowed) {
  return refusedReply(405, "only " + allowed + " is expected", allowed);
}

// Raw, whatever it is; with "nosniff" no browser makes more of it.
HttpReply bytesReply(const std::string& bytes) {
  HttpReply reply;
  reply.body = bytes;
  reply.headers.emplace_back("Content-Type", "application/octet-stream");
  return reply;
}

}  // namespace

bool ExchangesHandler::answers(const std::string& path) {
  return path == kEventsPath || path == kExchangesPath ||
         path.starts_with(std::string(kExchangesPath) + "/");
}

HttpReply ExchangesHandler::answer(const HttpRequest& request) {
  if (!request.fault.empty()) return refusedReply(request.faultStatus, request.fault);
  const std::string path = pathOfTarget(request.target);
  if (path == kExchangesPath) return answerAll(request);
  if (request.method != "GET") return wrongMethod("GET");
  if (path == kEventsPath) return feed_.open(request);
  const std::string below = path.substr(kExchangesPath.size() + 1);
  return below == "search" ? search(request) : answerOne(request, below);
}

HttpReply ExchangesHandler::answerAll(const HttpRequest& request) {
  if (request.method == "GET") return feed_.changes(request);
  if (request.method != "DELETE") return wrongMethod("GET, DELETE");
  log_.clearKept();
  return acceptedReply("OK");
}

HttpReply ExchangesHandler::answerOne(const HttpRequest& request, const std::string& path) const {
  const auto slash = path.find('/');
  const auto id = numberFromText(path.substr(0, slash));
  const std::string part = slash == std::string::npos ? "" : path.substr(slash + 1);
  const bool isKnown = part.empty() || part == "request" || part == "reply";
  if (!id || !isKnown) return refusedReply(404, "no control at \"" + request.target + "\"");
  const auto kept = log_.find(*id);
  if (!kept) return refusedReply(404, "the exchange is not kept");
  const Exchange& exchange = *kept->exchange;
  const bool isMasked = queryValue(request.target, "masked") == "1";
  if (part.empty()) {
    return jsonReply(isMasked ? masker_.maskedSummary(exchange, kept->outcome)
                              : exchangeSummary(exchange, kept->outcome));
  }
  const std::string& bytes = part == "request" ? exchange.request : exchange.reply;
  return bytesReply(isMasked ? masker_.maskedBody(bytes) : bytes);
}

HttpReply ExchangesHandler::search(const HttpRequest& request) const {
  const std::string text = queryValue(request.target, "text").value_or("");
  const auto holds = [&](const Exchange& exchange) {
    return exchange.request.find(text) != std::string::npos ||
           exchange.reply.find(text) != std::string::npos;
  };
  Json ids = Json::array();
  if (!text.empty()) {
    // Looked through without the log's lock.
    for (const KeptExchange& kept : log_.newest(kMaxFound, [](const Exchange&) { return true; })) {
      if (holds(*kept.exchange)) ids.push_back(kept.exchange->id);
    }
  }
  Json found = Json::object();
  found["ids"] = std::move(ids);
  return jsonReply(found);
}

}  // namespace risk_server
