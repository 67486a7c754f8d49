#include "apps/risk_server/exchanges/exchange_facts.h"

#include <array>
#include <string_view>
#include <utility>

#include "apps/risk_server/http/text_codecs.h"

namespace risk_server {
namespace {

struct FactSource {
  const char* fact;
  std::string_view path;
};

// Of several sources of one fact the first that is there counts.
constexpr std::array<FactSource, 17> kFactSources = {{
    {"user", "keys.user_id"},
    {"device", "keys.device_id"},
    {"session", "session.idSession"},
    {"requestID", "keys.requestID"},
    {"app", "keys.version"},
    {"checkpoint", "keys.checkpoint"},
    {"screen", "screenListenerEvent.screenListenerType"},
    {"screen", "bio_sensor_event_data.actionType"},
    {"screen", "screenType"},
    {"screenId", "screenListenerEvent.screenId"},
    {"screenId", "bio_sensor_event_data.actionId"},
    {"screenId", "screenId"},
    {"action", "screenListenerEvent.action"},
    {"at", "screenListenerEvent.timestamp"},
    {"outcome", "transactionUpdate.status"},
    {"updates", "transactionUpdate.requestID"},
    {"transaction", "transactionUpdate.transactionID"},
}};

bool isFact(const Json& value) {
  if (value.is_string()) return value.get_ref<const std::string&>().size() <= kMaxFactBytes;
  return value.is_number_integer();
}

}  // namespace

Json factsOf(const Json& body) {
  Json facts = Json::object();
  for (const auto& [fact, path] : kFactSources) {
    const Json* value = findPath(body, path);
    if (value != nullptr && isFact(*value) && !facts.contains(fact)) facts[fact] = *value;
  }
  if (const auto user = findText(facts, "user")) facts["user"] = percentDecode(*user);
  return facts;
}

}  // namespace risk_server
