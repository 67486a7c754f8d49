#include "diagnostics/logging_data.h"

#include <sstream>
#include <utility>

#include "base/milliseconds.h"
#include "base/vocabulary_table.h"

namespace quorvance {

template <>
struct VocabularyTable<StatusLogginType> {
  static constexpr auto kWords = std::to_array<std::string_view>({"Start", "End", "Middle"});
  static constexpr StatusLogginType kLast = StatusLogginType::middle;
};

namespace {

std::string threadText(std::thread::id thread) {
  std::ostringstream text;
  text << "thread " << thread;
  return text.str();
}

}  // namespace

Json LoggingData::getJson() const {
  Json object = makeObject(5);
  JsonDiscarder discarder(object);
  putMember(object, "date", dateText(timestamp));
  putMember(object, "threadName", threadText(call->thread));
  putMember(object, "methodName", std::string(call->methodName));
  // The key says "Logging", the type "Loggin".
  putMember(object, "statusLoggingType", std::string(wordOf(statusLogginType)));
  Json parameters = Json::array();
  const JsonDiscarder parametersDiscarder(parameters);
  if (call->paramList) {
    parameters.get_ref<Json::array_t&>().reserve(call->paramList->size());
    for (const std::string& parameter : *call->paramList) parameters.push_back(parameter);
  }
  putMember(object, "paramList", std::move(parameters));
  discarder.keep();
  return object;
}

}  // namespace quorvance
