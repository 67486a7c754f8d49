#include "quorvance/mobile_permission.h"

#include "base/vocabulary_table.h"

namespace quorvance {

template <>
struct VocabularyTable<MobilePermission> {
  static constexpr auto kWords = std::to_array<std::string_view>(
      {"READ_CONTACTS", "AUTHORIZED_ALWAYS", "AUTHORIZED_WHEN_IN_USE", "CAMERA", "REMINDER",
       "CALENDAR", "PHOTO"});
  static constexpr MobilePermission kFallback = MobilePermission::CALENDAR;
  static constexpr MobilePermission kLast = MobilePermission::PHOTO;
};

template class VocabularyToString<MobilePermission>;
template class VocabularyEnumerator<MobilePermission>;

}  // namespace quorvance
