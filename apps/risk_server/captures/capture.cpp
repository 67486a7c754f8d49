#include "apps/risk_server/captures/capture.h"

#include <utility>

#include "apps/risk_server/captures/har.h"
#include "apps/risk_server/contract/call_check.h"
#include "apps/risk_server/exchanges/exchange_facts.h"
#include "apps/risk_server/http/text_codecs.h"

namespace risk_server {
namespace {

// The bytes of "request" or "reply", whichever way the line has them.
std::string bytesAt(const Json& line, const std::string& key) {
  if (const auto encoded = findText(line, key + "Bytes")) {
    auto bytes = bytesFromBase64Url(*encoded);
    if (!bytes) throw InputError(key + "Bytes: expected base64url");
    return std::move(*bytes);
  }
  if (const auto text = findText(line, key + "Text")) return *text;
  const Json* body = findMember(line, key);
  if (body == nullptr) return {};
  return body->is_string() ? body->get<std::string>() : dumpServerJson(*body);
}

std::optional<Delivery> deliveryAt(const Json& line) {
  const auto word = findText(line, "delivery");
  for (int i = 0; word && i <= static_cast<int>(Delivery::kClientLeft); ++i) {
    if (*word == wordOf(static_cast<Delivery>(i))) return static_cast<Delivery>(i);
  }
  return std::nullopt;
}

// Empty for a connection that was closed as it came; a line without any is none of an exchange.
std::string pathAt(const Json& line) {
  const Json* path = findMember(line, "path");
  if (path == nullptr) throw InputError("path: missing");
  if (!path->is_string()) throw InputError("path: expected a text, got " + quoteForMessage(*path));
  return path->get<std::string>();
}

CapturedExchange readLine(const Json& line) {
  if (!line.is_object()) throw InputError("expected an object, got " + quoteForMessage(line));
  CapturedExchange captured;
  Exchange& exchange = captured.exchange;
  exchange.time = findInteger(line, "time").value_or(0);
  exchange.received = findInteger(line, "received").value_or(exchange.time);
  exchange.method = findText(line, "method").value_or("");
  exchange.path = pathAt(line);
  exchange.contentType = findText(line, "contentType").value_or("");
  exchange.request = bytesAt(line, "request");
  exchange.status = static_cast<int>(findInteger(line, "status").value_or(0));
  exchange.reply = bytesAt(line, "reply");
  exchange.fault = findText(line, "fault").value_or("");
  exchange.faultInjected = findText(line, "faultInjected").value_or("");
  takeVerdict(line, exchange);
  captured.outcome = outcomeAt(line);
  return captured;
}

void readLines(std::string_view text, Capture& capture) {
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (line.find_first_not_of(" \t\r") == std::string_view::npos) continue;
    const std::string where = "line " + std::to_string(number);
    try {
      capture.exchanges.push_back(readLine(readServerJson(line, "no JSON")));
    } catch (const InputError& error) {
      throw InputError(where + ": " + error.what());
    }
    capture.exchanges.back().where = where;
  }
}

void addBytes(Json& entry, const std::string& key, const std::string& bytes) {
  if (isUtf8(bytes)) {
    entry[key] = bytes;
  } else {
    entry[key + "Bytes"] = base64Url(bytes);
  }
}

}  // namespace

ReplyOutcome outcomeAt(const Json& json) {
  return {deliveryAt(json), findInteger(json, "replied").value_or(0),
          findInteger(json, "took").value_or(0)};
}

void takeVerdict(const Json& json, Exchange& exchange) {
  if (const auto risk = findInteger(json, "risk")) exchange.risk = static_cast<int>(*risk);
  if (const auto rule = findInteger(json, "rule")) exchange.rule = static_cast<std::size_t>(*rule);
}

void checkExchange(Exchange& exchange, const Contract& contract) {
  // A connection that was closed as it came is no call.
  if (exchange.path.empty()) return;
  std::vector<std::string> types;
  if (!exchange.contentType.empty()) types.push_back(exchange.contentType);
  CheckedCall checked =
      checkCall(contract, exchange.method, exchange.path, types, exchange.request);
  if (checked.body) exchange.facts = factsOf(*checked.body);
  exchange.violations = std::move(checked.violations);
  if (!checked.fault.empty()) exchange.fault = std::move(checked.fault);
}

Capture readCapture(std::string_view text, const Contract& contract) {
  Capture capture;
  if (looksLikeHar(text)) {
    readHar(text, contract, capture);
  } else {
    readLines(text, capture);
  }
  std::uint64_t id = 0;
  for (CapturedExchange& captured : capture.exchanges) {
    captured.exchange.id = ++id;
    checkExchange(captured.exchange, contract);
  }
  return capture;
}

Json captureEntry(const Exchange& exchange, const ReplyOutcome& outcome) {
  Json entry = Json::object();
  entry["row"] = exchangeSummary(exchange, outcome);
  addBytes(entry, "request", exchange.request);
  addBytes(entry, "reply", exchange.reply);
  return entry;
}

}  // namespace risk_server
