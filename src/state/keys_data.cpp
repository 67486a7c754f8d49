#include "state/keys_data.h"

#include "base/record.h"

namespace quorvance {
namespace {

constexpr auto kKeysFields = RecordTable{
    field<&KeysData::userId>("user_id"),        field<&KeysData::deviceId>("device_id"),
    field<&KeysData::requestId>("requestID"),   field<&KeysData::appUUID>("app_uuid"),
    field<&KeysData::checkPoint>("checkpoint"), field<&KeysData::version>("version"),
};

}  // namespace

Json KeysData::getJson() const { return recordToJson(*this, kKeysFields); }

}  // namespace quorvance
