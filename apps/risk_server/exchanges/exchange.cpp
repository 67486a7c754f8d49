#include "apps/risk_server/exchanges/exchange.h"

#include <string_view>
#include <utility>

#include "apps/risk_server/http/text_codecs.h"

namespace risk_server {
namespace {

// The bytes that a reader makes of what the line holds: a text as it stands, JSON compactly.
std::string bytesOf(const Json& inLine) {
  return inLine.is_string() ? inLine.get<std::string>() : dumpServerJson(inLine);
}

// Whether a dump of the line gives the bytes back: what is not UTF-8 is replaced there.
bool keepsBytes(const Json& inLine, const std::string& bytes) {
  return bytesOf(inLine) == bytes && (!inLine.is_string() || isUtf8(bytes));
}

void addRequest(Json& line, const std::string& bytes) {
  ParsedJson request = parseServerJson(bytes);
  const char* key = request.value ? "request" : "requestText";
  Json& inLine = line[key] = request.value ? std::move(*request.value) : Json(bytes);
  // A text under "request" is JSON, which bytesOf() would take for text.
  const bool isExact = keepsBytes(inLine, bytes) && !(request.value && inLine.is_string());
  if (!isExact) line["requestBytes"] = base64Url(bytes);
}

void addReply(Json& line, const std::string& bytes) {
  ParsedJson reply = parseServerJson(bytes);
  Json& inLine = line["reply"] = reply.value ? std::move(*reply.value) : Json(bytes);
  if (!keepsBytes(inLine, bytes)) line["replyBytes"] = base64Url(bytes);
}

void addFaults(Json& json, const Exchange& exchange) {
  if (!exchange.fault.empty()) json["fault"] = exchange.fault;
  if (!exchange.faultInjected.empty()) json["faultInjected"] = exchange.faultInjected;
}

void addIdentity(Json& json, const Exchange& exchange) {
  if (exchange.id != 0) json["id"] = exchange.id;
  json["received"] = exchange.received;
  if (exchange.risk) json["risk"] = *exchange.risk;
  if (exchange.rule) json["rule"] = *exchange.rule;
}

void addViolations(Json& json, const Exchange& exchange) {
  if (exchange.violations.empty()) return;
  Json& list = json["violations"] = Json::array();
  for (const Mismatch& violation : exchange.violations) {
    Json one = Json::object();
    one["place"] = placeToJson(violation.place);
    one["reason"] = violation.reason;
    list.push_back(std::move(one));
  }
}

void addOutcome(Json& json, const Exchange& exchange, const ReplyOutcome& outcome) {
  if (outcome.delivery) {
    json["replied"] = outcome.replied;
    json["took"] = outcome.took;
    json["delivery"] = wordOf(*outcome.delivery);
  }
  if (exchange.facts.is_object()) json["facts"] = exchange.facts;
}

}  // namespace

Json exchangeToJson(const Exchange& exchange) {
  Json line = Json::object();
  line["time"] = exchange.time;
  line["method"] = exchange.method;
  line["path"] = exchange.path;
  line["status"] = exchange.status;
  line["contentType"] = exchange.contentType;
  addRequest(line, exchange.request);
  addReply(line, exchange.reply);
  addFaults(line, exchange);
  addIdentity(line, exchange);
  addViolations(line, exchange);
  return line;
}

Json exchangeToJson(const Exchange& exchange, const ReplyOutcome& outcome) {
  Json line = exchangeToJson(exchange);
  addOutcome(line, exchange, outcome);
  return line;
}

Json exchangeSummary(const Exchange& exchange, const ReplyOutcome& outcome) {
  Json row = Json::object();
  addIdentity(row, exchange);
  row["time"] = exchange.time;
  row["method"] = exchange.method;
  row["path"] = exchange.path;
  row["status"] = exchange.status;
  row["contentType"] = exchange.contentType;
  row["requestSize"] = exchange.request.size();
  row["replySize"] = exchange.reply.size();
  addFaults(row, exchange);
  addViolations(row, exchange);
  addOutcome(row, exchange, outcome);
  return row;
}

}  // namespace risk_server
