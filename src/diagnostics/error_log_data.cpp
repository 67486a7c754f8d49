#include "diagnostics/error_log_data.h"

#include "base/record.h"

namespace quorvance {
namespace {

constexpr auto kErrorFields = RecordTable{
    field<&ErrorLogData::errorStack>("error_stack"),
    field<&ErrorLogData::version>("version"),
    field<&ErrorLogData::deviceModel>("device_model"),
    field<&ErrorLogData::sdkVersion>("sdk_version"),
    field<&ErrorLogData::cause>("cause"),
    field<&ErrorLogData::errorType>("error_type"),
    field<&ErrorLogData::errorCode>("error_code"),
    field<&ErrorLogData::error_timestamp>("error_timestamp"),
};

}  // namespace

Json ErrorLogData::getJson() const { return recordToJson(*this, kErrorFields); }

Json ErrorLogData::completeJson(SystemTexts& texts) const {
  if (version) return getJson();
  ErrorLogData whole = *this;
  whole.version = texts.readSystemVersion();
  return whole.getJson();
}

ErrorLogData ErrorLogData::stamped(const SystemTexts& texts, std::int64_t now) {
  return {.version = texts.systemVersion(),
          .deviceModel = texts.deviceModel(),
          .sdkVersion = SystemTexts::sdkVersion(),
          .error_timestamp = now};
}

}  // namespace quorvance
