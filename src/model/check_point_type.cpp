#include "quorvance/check_point_type.h"

#include "base/vocabulary_table.h"

namespace quorvance {

template <>
struct VocabularyTable<CheckPointType> {
  static constexpr auto kWords = std::to_array<std::string_view>(
      {"LAUNCH", "REGISTER", "LOGIN", "TRANSACTION", "UPDATE_DETAILS", "ADD_PAYMENT_METHOD",
       "GENERAL", "UPDATE_USER_INFO", "PASSWORD_CHANGE", "NONE"});
  static constexpr CheckPointType kFallback = CheckPointType::GENERAL;
  static constexpr CheckPointType kLast = CheckPointType::NONE;
};

template <>
struct VocabularyTable<CheckPointStatus> {
  static constexpr auto kWords =
      std::to_array<std::string_view>({"APPROVED", "DENIED", "CANCELLED"});
  static constexpr CheckPointStatus kFallback = CheckPointStatus::CANCELLED;
  static constexpr CheckPointStatus kLast = CheckPointStatus::CANCELLED;
};

template class VocabularyToString<CheckPointType>;
template class NillableVocabularyToString<CheckPointType>;
template class VocabularyEnumerator<CheckPointType>;
template class VocabularyToString<CheckPointStatus>;
template class VocabularyEnumerator<CheckPointStatus>;

}  // namespace quorvance
