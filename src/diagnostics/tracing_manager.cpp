#include "diagnostics/tracing_manager.h"

#include <thread>
#include <utility>

#include "base/collection.h"
#include "base/debug.h"

namespace quorvance {
namespace {

Json jsonOf(const LoggingData& record, SystemTexts& /*texts*/) { return record.getJson(); }

Json jsonOf(const std::shared_ptr<const ErrorLogData>& record, SystemTexts& texts) {
  return record->completeJson(texts);
}

}  // namespace

TracingManager::TracingManager(std::shared_ptr<InnerQuorvanceData> state,
                               std::shared_ptr<SystemTexts> texts)
    : state_(std::move(state)), texts_(std::move(texts)) {}

std::optional<LoggingData> TracingManager::traceStart(bool enabled, std::string_view methodName,
                                                      std::vector<std::string> paramList) {
  if (!enabled) return std::nullopt;
  TraceArguments arguments;
  if (!paramList.empty()) {
    arguments = std::make_shared<const std::vector<std::string>>(std::move(paramList));
  }
  return traceStartWith(methodName, std::move(arguments));
}

LoggingData TracingManager::traceStartWith(std::string_view methodName, TraceArguments arguments) {
  LoggingData record{state_->now(),
                     std::make_shared<const LoggingData::Call>(LoggingData::Call{
                         std::this_thread::get_id(), methodName, std::move(arguments)}),
                     StatusLogginType::start};
  add(record);
  return record;
}

void TracingManager::traceEnd(bool enabled, std::optional<LoggingData>& record) {
  if (enabled && record) addRestamped(*record, StatusLogginType::end);
}

void TracingManager::traceAppend(bool enabled, std::optional<LoggingData>& record,
                                 std::string text) {
  if (!enabled || !record) return;
  auto call = std::make_shared<LoggingData::Call>(*record->call);
  auto further = std::make_shared<std::vector<std::string>>();
  if (call->paramList) *further = *call->paramList;
  further->push_back(std::move(text));
  call->paramList = std::move(further);
  record->call = std::move(call);
  addRestamped(*record, StatusLogginType::middle);
}

void TracingManager::addRestamped(LoggingData& record, StatusLogginType status) {
  record.statusLogginType = status;
  record.timestamp = state_->now();
  add(record);
}

void TracingManager::traceException(const PlatformError& error) {
  auto record = std::make_shared<ErrorLogData>(ErrorLogData::stamped(*texts_, state_->now()));
  record->errorStack = error.description;
  record->cause = error.failureReason;
  record->errorType = error.domain;
  record->errorCode = error.code;
  add(std::move(record));
}

void TracingManager::add(Entry entry) {
  if (!isCollectionEnabled()) return;
  if (isInDebugMode()) {
    debugPrint("length dataLogging: Optional(" + std::to_string(size()) + ")");
  }
  const auto cap = state_->traceLevels().maxTraceData();
  const std::lock_guard lock(mutex_);
  if (!cap || std::cmp_greater(dataLogging_.size(), *cap)) return;
  dataLogging_.push_back(std::move(entry));
}

void TracingManager::clear() {
  std::vector<Entry> dropped;
  const std::lock_guard lock(mutex_);
  dataLogging_.swap(dropped);
}

bool TracingManager::isEmpty() const { return size() == 0; }

std::size_t TracingManager::size() const {
  const std::lock_guard lock(mutex_);
  return dataLogging_.size();
}

std::vector<TracingManager::Entry> TracingManager::snapshot() const {
  const std::lock_guard lock(mutex_);
  return dataLogging_;
}

Json TracingManager::entries() const {
  const std::vector<Entry> copy = snapshot();
  Json list = Json::array();
  JsonDiscarder discarder(list);
  list.get_ref<Json::array_t&>().reserve(copy.size());
  for (const Entry& entry : copy) {
    list.push_back(std::visit([&](const auto& record) { return jsonOf(record, *texts_); }, entry));
  }
  discarder.keep();
  return list;
}

}  // namespace quorvance
