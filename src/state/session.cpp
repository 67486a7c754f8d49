#include "state/session.h"

#include "base/record.h"

namespace quorvance {
namespace {

constexpr std::string_view kSessionKey = "session";
constexpr std::string_view kIdKey = "idSession";
constexpr std::string_view kTimeKey = "timeSession";

constexpr auto kSessionFields = RecordTable{
    field<&Session::idSession>(kIdKey),
    field<&Session::timeSession>(kTimeKey),
};

}  // namespace

Json Session::getJson() const { return recordToJson(*this, kSessionFields); }

void Session::putInto(Json& body) const {
  const Json* there = findObject(body, kSessionKey);
  const std::string* id = there == nullptr ? nullptr : findText(*there, kIdKey);
  const bool isThere = id != nullptr && *id == idSession &&
                       there->size() == kSessionFields.size() &&
                       findInteger(*there, kTimeKey) == timeSession;
  if (!isThere) setMember(body, kSessionKey, getJson());
}

}  // namespace quorvance
