#include "diagnostics/activity_map.h"

#include "base/record.h"

namespace quorvance {
namespace {

constexpr std::string_view kScreenTypeKey = "screenType";

constexpr auto kActivityFields = RecordTable{
    field<&ActivityMap::appID>("appID"),
    field<&ActivityMap::appVer>("appVer"),
    field<&ActivityMap::deviceId>("deviceId"),
    field<&ActivityMap::userId>("userId"),
    field<&ActivityMap::sessionId>("sessionId"),
    field<&ActivityMap::screenType>(kScreenTypeKey),
    field<&ActivityMap::screenId>("screenId"),
    field<&ActivityMap::timestampStart>("timestampStart"),
    field<&ActivityMap::timestampEnd>("timestampEnd"),
};

}  // namespace

Json ActivityMap::getJson() const { return recordToJson(*this, kActivityFields); }

// The word is none of the vocabulary; any type keeps its place among the keys.
Json ActivityMap::startAppJson() const {
  ActivityMap record = *this;
  record.screenType = ScreenListenerType::GENERAL;
  Json json = record.getJson();
  setMember(json, kScreenTypeKey, "startApp");
  return json;
}

}  // namespace quorvance
