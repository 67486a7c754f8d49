#include "apps/risk_server/masking/masker.h"

#include <algorithm>
#include <array>
#include <utility>

#include "apps/risk_server/embedded_files.h"
#include "apps/risk_server/http/text_codecs.h"
#include "apps/risk_server/verdicts/signed_verdict.h"

namespace risk_server {
namespace {

// JSON in a text in a JSON in a text: hosts nest once.
constexpr int kMaxDepthOfTexts = 3;
constexpr std::size_t kLongText = 400;
constexpr std::string_view kStandInPrefix = "masked-";

// Keys whose texts say something about the library or the system, not about a person.
constexpr std::array<std::string_view, 15> kHarmlessTexts = {
    "version",      "sdk_version",       "iosVersion", "systemName", "model", "kindModel",
    "device_model", "statusLoggingType", "methodName", "threadName", "date",  "checkpoint_type",
    "appVer",       "app_run_mode",      "app"};

// Keys whose numbers are times, counts, codes and measurements of the device's own.
constexpr std::array<std::string_view, 27> kHarmlessNumbers = {
    "collectTime",    "timeSession", "timestamp",       "timestampStart", "timestampEnd",
    "timeStamp",      "error_code",  "error_timestamp", "screenId",       "actionId",
    "risk",           "iat",         "eventList",       "eventListTS",    "sensorsData",
    "sensorsTS",      "screenWidth", "screenHeight",    "xdpi",           "ydpi",
    "fontCount",      "ramSize",     "storageSize",     "labelFontSize",  "timeout_connection",
    "max_trace_data", "at"};

template <std::size_t size>
bool contains(const std::array<std::string_view, size>& words, std::string_view word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// Keys of objects and words of vocabularies, of all rules below.
void collectWords(const Json& rule, std::set<std::string>& keys, std::set<std::string>& words) {
  if (!rule.is_structured()) return;
  for (const auto& [name, part] : rule.items()) {
    if (name == "fields" && part.is_object()) {
      for (const auto& [key, ignored] : part.items()) {
        keys.insert(key.ends_with('?') ? key.substr(0, key.size() - 1) : key);
      }
    }
    if (name == "is" || name == "oneOf") {
      for (const Json& word : part.is_array() ? part : Json::array({part})) {
        if (word.is_string()) words.insert(word.get<std::string>());
      }
    }
    collectWords(part, keys, words);
  }
}

void collectKeys(const Json& value, std::set<std::string>& keys, std::set<std::string>& words) {
  if (value.is_string()) words.insert(value.get<std::string>());
  if (!value.is_structured()) return;
  for (const auto& [key, part] : value.items()) {
    if (value.is_object()) keys.insert(key);
    collectKeys(part, keys, words);
  }
}

bool isUuid(std::string_view text) {
  if (text.size() != 36) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isDash = i == 8 || i == 13 || i == 18 || i == 23;
    const bool isHex =
        std::string_view("0123456789abcdefABCDEF").find(text[i]) != std::string_view::npos;
    if (isDash ? text[i] != '-' : !isHex) return false;
  }
  return true;
}

bool isDigits(std::string_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// The path of "http://HOST/PATH"; empty for other texts.
std::string pathOfUrl(const std::string& text) {
  if (!text.starts_with("http://") && !text.starts_with("https://")) return {};
  const auto slash = text.find('/', text.find("//") + 2);
  return slash == std::string::npos ? std::string() : text.substr(slash);
}

}  // namespace

Masker::Masker(const Contract& contract, std::string key)
    : contract_(contract), key_(std::move(key)) {
  collectWords(contract.asJson(), keys_, words_);
  collectKeys(readServerJson(embeddedConfig(), "default_config.json"), keys_, words_);
  for (const char* replyKey : {"response", "deviceID", "risk", "signedRisk", "requestID", "error"})
    keys_.insert(replyKey);
  for (const char* word : {"OK", "no_device_id", "UNKNOWN", "nil"}) words_.insert(word);
}

std::string Masker::digest(std::string_view value) const {
  return hexText(hmacSha256(key_, value));
}

std::string Masker::standIn(std::string_view value) const {
  return std::string(kStandInPrefix) + digest(percentDecode(value)).substr(0, 10);
}

std::string Masker::uuidFor(std::string_view value) const {
  std::string text = digest(value).substr(0, 32);
  for (char& c : text) c = c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c;
  for (const std::size_t dash : {8U, 13U, 18U, 23U}) text.insert(dash, 1, '-');
  return text;
}

Json Masker::maskedNumber(const Json& number) const {
  // Six digits: no number of the original's size, and the same for the same number.
  return std::stoi(digest(dumpServerJson(number)).substr(0, 5), nullptr, 16) % 900'000 + 100'000;
}

std::string Masker::maskedKey(const std::string& key) const {
  return keys_.contains(key) || words_.contains(key) ? key : standIn(key);
}

std::string Masker::maskedText(const std::string& key, const std::string& text, int depth) const {
  // A refusal quotes what it refuses.
  if (key == "error") return "refused";
  if (text.empty() || words_.contains(text) || contains(kHarmlessTexts, key)) return text;
  if (isUuid(text)) return uuidFor(text);
  // A session's identifier is that of the device, and a time.
  if (text.size() > 37 && text[36] == '-' && isUuid(text.substr(0, 36)) &&
      isDigits(text.substr(37))) {
    return uuidFor(text.substr(0, 36)) + text.substr(36);
  }
  if (const std::string path = pathOfUrl(text); contract_.find(path) != nullptr)
    return "http://masked" + path;
  const bool looksLikeJson = text.front() == '{' || text.front() == '[';
  if (looksLikeJson && depth < kMaxDepthOfTexts) {
    if (const ParsedJson inner = parseServerJson(text); inner.value) {
      return dumpServerJson(maskedValue(key, *inner.value, depth + 1));
    }
  }
  if (text.size() > kLongText)
    return standIn(text) + " (" + std::to_string(text.size()) + " bytes)";
  return standIn(text);
}

Json Masker::maskedObject(const Json& object, int depth) const {
  Json masked = Json::object();
  for (const auto& [key, value] : object.items())
    masked[maskedKey(key)] = maskedValue(key, value, depth);
  return masked;
}

Json Masker::maskedValue(const std::string& key, const Json& value, int depth) const {
  if (value.is_object()) return maskedObject(value, depth);
  if (value.is_array()) {
    Json masked = Json::array();
    for (const Json& item : value) masked.push_back(maskedValue(key, item, depth));
    return masked;
  }
  if (value.is_string()) return maskedText(key, value.get<std::string>(), depth);
  if (value.is_number() && !contains(kHarmlessNumbers, key)) return maskedNumber(value);
  return value;
}

std::string Masker::maskedBody(const std::string& body) const {
  if (body.empty()) return body;
  const ParsedJson parsed = parseServerJson(body);
  if (!parsed.value)
    return standIn(body) + " (" + std::to_string(body.size()) + " bytes that are no JSON)";
  return dumpServerJson(maskedValue("", *parsed.value, 0));
}

std::string Masker::maskedPath(const std::string& path) const {
  if (path.empty() || contract_.find(path) != nullptr) return path;
  const std::string squeezed = squeezeSlashes(path);
  for (const auto& [known, call] : contract_.calls()) {
    if (squeezeSlashes(known) == squeezed) return path;
  }
  return "/" + standIn(path);
}

// A reason ends in the value that was got, or in a quotation.
std::string Masker::maskedReason(const std::string& reason) const {
  std::string kept = reason.substr(0, reason.find(", got "));
  if (kept.size() < reason.size()) return kept + ", got another";
  for (const char* quotation : {" (\"", " \"", "'", "; last read"})
    kept = kept.substr(0, kept.find(quotation));
  return kept;
}

Exchange Masker::withoutBodies(const Exchange& exchange) const {
  Exchange masked;
  masked.id = exchange.id;
  masked.time = exchange.time;
  masked.received = exchange.received;
  masked.method = exchange.method;
  masked.path = maskedPath(exchange.path);
  const bool isUsual =
      exchange.contentType.empty() || exchange.contentType == contract_.contentType();
  masked.contentType = isUsual ? exchange.contentType : standIn(exchange.contentType);
  masked.status = exchange.status;
  masked.faultInjected = exchange.faultInjected;
  masked.risk = exchange.risk;
  masked.rule = exchange.rule;
  if (exchange.facts.is_object()) masked.facts = Json::object();
  for (const auto& [fact, value] : exchange.facts.items())
    masked.facts[fact] = maskedValue(fact, value, 0);
  for (const Mismatch& violation : exchange.violations) {
    masked.violations.push_back({violation.place, maskedReason(violation.reason)});
    for (PlaceStep& step : masked.violations.back().place) {
      if (auto* key = std::get_if<std::string>(&step)) *key = maskedKey(*key);
    }
  }
  masked.fault =
      masked.violations.empty() ? maskedReason(exchange.fault) : masked.violations.front().text();
  return masked;
}

Json Masker::maskedSummary(const Exchange& exchange, const ReplyOutcome& outcome) const {
  Json row = exchangeSummary(withoutBodies(exchange), outcome);
  row["requestSize"] = exchange.request.size();
  row["replySize"] = exchange.reply.size();
  return row;
}

Exchange Masker::masked(const Exchange& exchange) const {
  Exchange masked = withoutBodies(exchange);
  masked.request = maskedBody(exchange.request);
  masked.reply = maskedBody(exchange.reply);
  return masked;
}

}  // namespace risk_server
