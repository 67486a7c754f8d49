#include "apps/risk_server/captures/har.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <utility>

#include "apps/risk_server/http/text_codecs.h"

namespace risk_server {
namespace {

constexpr const char* kOwnKey = "_exchange";

std::string isoTime(std::int64_t milliseconds) {
  const std::time_t seconds = static_cast<std::time_t>(milliseconds / 1000);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  std::array<char, 40> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &parts);
  std::snprintf(text.data() + length, text.size() - length, ".%03dZ",
                static_cast<int>(milliseconds % 1000));
  return text.data();
}

// "2023-11-14T22:13:20.123Z", or with an offset such as "+01:00"; 0 for what is no such time.
std::int64_t millisecondsOf(const std::string& iso) {
  std::tm parts{};
  const char* rest = strptime(iso.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
  if (rest == nullptr) return 0;
  std::int64_t milliseconds = static_cast<std::int64_t>(timegm(&parts)) * 1000;
  if (*rest == '.') {
    int scale = 100;
    for (++rest; *rest >= '0' && *rest <= '9'; ++rest, scale /= 10)
      milliseconds += (*rest - '0') * scale;
  }
  int hours = 0;
  int minutes = 0;
  if ((*rest == '+' || *rest == '-') && std::sscanf(rest + 1, "%2d:%2d", &hours, &minutes) == 2) {
    milliseconds += (*rest == '-' ? 1 : -1) * (hours * 60 + minutes) * 60'000LL;
  }
  return milliseconds;
}

// The service's path at the end of a URL; empty when the URL is no service's.
std::string serviceTarget(const std::string& url, const Contract& contract) {
  const auto scheme = url.find("//");
  const auto slash = scheme == std::string::npos ? scheme : url.find('/', scheme + 2);
  if (slash == std::string::npos) return {};
  const std::string target = url.substr(slash, url.find('#') - slash);
  const std::string path = target.substr(0, target.find('?'));
  for (const auto& [known, call] : contract.calls()) {
    // One that differs in its slashes, or has a query, is a call that went wrong, not another
    // service.
    if (path.ends_with(known)) return target.substr(path.size() - known.size());
    const auto begin = path.rfind(known.substr(0, known.find('/', 1) + 1));
    if (begin == std::string::npos) continue;
    if (squeezeSlashes(path.substr(begin)) == squeezeSlashes(known)) return target.substr(begin);
  }
  return {};
}

std::string headerOf(const Json& message, std::string_view name) {
  const Json* headers = findMember(message, "headers");
  if (headers == nullptr || !headers->is_array()) return {};
  for (const Json& header : *headers) {
    if (equalWithoutCase(findText(header, "name").value_or(""), name))
      return findText(header, "value").value_or("");
  }
  return {};
}

std::string contentOf(const Json& content) {
  std::string text = findText(content, "text").value_or("");
  if (findText(content, "encoding") != "base64") return text;
  std::string url = text.substr(0, text.find('='));
  for (char& c : url) c = c == '+' ? '-' : c == '/' ? '_' : c;
  return bytesFromBase64Url(url).value_or(text);
}

void takeOwn(const Json& own, CapturedExchange& captured) {
  Exchange& exchange = captured.exchange;
  exchange.fault = findText(own, "fault").value_or("");
  exchange.faultInjected = findText(own, "faultInjected").value_or("");
  takeVerdict(own, exchange);
  exchange.received = findInteger(own, "received").value_or(exchange.received);
  exchange.time = findInteger(own, "time").value_or(exchange.time);
  captured.outcome = outcomeAt(own);
  if (const auto bytes = findText(own, "requestBytes")) {
    exchange.request = bytesFromBase64Url(*bytes).value_or("");
  }
}

CapturedExchange readEntry(const Json& entry, const std::string& target) {
  CapturedExchange captured;
  Exchange& exchange = captured.exchange;
  const Json& request = *findMember(entry, "request");
  const Json* response = findMember(entry, "response");
  const Json* time = findMember(entry, "time");
  exchange.path = target;
  exchange.method = findText(request, "method").value_or("");
  exchange.contentType = headerOf(request, "Content-Type");
  exchange.request = findText(request, "postData.text").value_or("");
  if (exchange.contentType.empty())
    exchange.contentType = findText(request, "postData.mimeType").value_or("");
  exchange.received = exchange.time =
      millisecondsOf(findText(entry, "startedDateTime").value_or(""));
  exchange.status = static_cast<int>(findInteger(entry, "response.status").value_or(0));
  if (const Json* content = response == nullptr ? nullptr : findMember(*response, "content"))
    exchange.reply = contentOf(*content);
  if (time != nullptr && time->is_number()) {
    captured.outcome.took = static_cast<std::int64_t>(time->get<double>() * 1000);
    captured.outcome.replied = exchange.time + captured.outcome.took / 1000;
  }
  if (exchange.status > 0) captured.outcome.delivery = Delivery::kWhole;
  if (const Json* own = findMember(entry, kOwnKey)) takeOwn(*own, captured);
  return captured;
}

Json message(const std::string& contentType) {
  Json json = Json::object();
  json["httpVersion"] = "HTTP/1.1";
  json["cookies"] = Json::array();
  json["headers"] = Json::array();
  if (!contentType.empty()) {
    Json header = Json::object();
    header["name"] = "Content-Type";
    header["value"] = contentType;
    json["headers"].push_back(std::move(header));
  }
  json["headersSize"] = -1;
  return json;
}

Json harRequest(const Exchange& exchange, const std::string& url) {
  Json request = message(exchange.contentType);
  request["method"] = exchange.method;
  request["url"] = url.substr(0, url.size() - 1) + exchange.path;
  request["queryString"] = Json::array();
  request["bodySize"] = exchange.request.size();
  Json data = Json::object();
  data["mimeType"] = exchange.contentType;
  data["text"] = exchange.request;
  request["postData"] = std::move(data);
  return request;
}

Json harResponse(const Exchange& exchange) {
  Json response = message("application/json; charset=utf-8");
  response["status"] = exchange.status;
  response["statusText"] = "";
  response["redirectURL"] = "";
  response["bodySize"] = exchange.reply.size();
  Json content = Json::object();
  content["size"] = exchange.reply.size();
  content["mimeType"] = "application/json; charset=utf-8";
  content["text"] = isUtf8(exchange.reply) ? exchange.reply : base64(exchange.reply);
  if (!isUtf8(exchange.reply)) content["encoding"] = "base64";
  response["content"] = std::move(content);
  return response;
}

}  // namespace

bool looksLikeHar(std::string_view text) {
  // A log line begins with a brace, too, but has all of its object in one line.
  const auto begin = text.find_first_not_of(" \t\r\n\xef\xbb\xbf");
  if (begin == std::string_view::npos || text[begin] != '{') return false;
  return text.substr(begin, 200).find("\"log\"") != std::string_view::npos;
}

void readHar(std::string_view text, const Contract& contract, Capture& capture) {
  if (text.starts_with("\xef\xbb\xbf")) text.remove_prefix(3);
  const Json har = readServerJson(text, "no JSON");
  const Json* entries = findPath(har, "log.entries");
  if (entries == nullptr || !entries->is_array())
    throw InputError("log.entries: expected an array");
  for (std::size_t i = 0; i < entries->size(); ++i) {
    const Json& entry = (*entries)[i];
    const std::string where = "entry " + std::to_string(i + 1);
    const auto url = findText(entry, "request.url");
    if (!url) throw InputError(where + ": request.url: missing");
    const std::string target = serviceTarget(*url, contract);
    if (target.empty()) {
      ++capture.skipped;
      continue;
    }
    capture.exchanges.push_back(readEntry(entry, target));
    capture.exchanges.back().where = where;
  }
}

std::string_view harBegin() {
  return R"({"log":{"version":"1.2","creator":{"name":"QuorvanceSDK risk server","version":"1"},"entries":[)";
}

std::string_view harEnd() { return "\n]}}\n"; }

Json harEntry(const Exchange& exchange, const ReplyOutcome& outcome, const std::string& url) {
  const double milliseconds = static_cast<double>(outcome.took) / 1000;
  Json timings = Json::object();
  timings["send"] = 0;
  timings["wait"] = milliseconds;
  timings["receive"] = 0;
  Json entry = Json::object();
  entry["startedDateTime"] = isoTime(exchange.received);
  entry["time"] = milliseconds;
  entry["request"] = harRequest(exchange, url);
  entry["response"] = harResponse(exchange);
  entry["cache"] = Json::object();
  entry["timings"] = std::move(timings);
  Json own = exchangeSummary(exchange, outcome);
  if (!isUtf8(exchange.request)) own["requestBytes"] = base64Url(exchange.request);
  entry[kOwnKey] = std::move(own);
  return entry;
}

}  // namespace risk_server
