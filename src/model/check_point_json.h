#pragma once

#include <memory>
#include <string_view>

#include "base/json.h"
#include "quorvance/check_point.h"

namespace quorvance {

/// The keys that every checkpoint shares.
inline constexpr std::string_view kCheckPointTypeKey = "checkpoint_type";
inline constexpr std::string_view kAdditionalDataKey = "additionalData";
inline constexpr std::string_view kUserKey = "user";

/// An object with room for `members`, opened with "checkpoint_type".
Json openCheckPoint(CheckPointType type, std::size_t members);

/// Adds "additionalData" when the checkpoint has some.
void putAdditionalData(Json& object, const CheckPoint& checkPoint);

/// Adds the record under the key, an empty object when it is absent.
template <class Record>
void putRecordOrEmpty(Json& object, std::string_view key,
                      const std::shared_ptr<const Record>& record) {
  putMember(object, key, record ? record->getJson() : Json::object());
}

/// The record under the key, absent unless an object stands there.
template <class Record>
std::shared_ptr<const Record> findRecord(const Json& json, std::string_view key) {
  const Json* object = findObject(json, key);
  return object == nullptr ? nullptr : std::make_shared<const Record>(Record::fromJson(*object));
}

}  // namespace quorvance
