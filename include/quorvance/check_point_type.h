#pragma once

#include <cstdint>

#include "quorvance/vocabulary.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// What kind of moment a checkpoint is.
enum class CheckPointType : std::int64_t {
  LAUNCH = 0,
  REGISTER = 1,
  LOGIN = 2,
  TRANSACTION = 3,
  UPDATE_DETAILS = 4,
  ADD_PAYMENT_METHOD = 5,
  GENERAL = 6,
  UPDATE_USER_INFO = 7,
  PASSWORD_CHANGE = 8,
  NONE = 9,
};

/// An unknown word reads as GENERAL.
using CheckPointTypeToString = NillableVocabularyToString<CheckPointType>;
using CheckPointTypeEnumerator = VocabularyEnumerator<CheckPointType>;

/// What became of the business operation of a checkpoint.
enum class CheckPointStatus : std::int64_t { APPROVED = 0, DENIED = 1, CANCELLED = 2 };

/// An unknown word reads as CANCELLED.
using CheckPointStatusToString = VocabularyToString<CheckPointStatus>;
using CheckPointStatusEnumerator = VocabularyEnumerator<CheckPointStatus>;

extern template class VocabularyToString<CheckPointType>;
extern template class NillableVocabularyToString<CheckPointType>;
extern template class VocabularyEnumerator<CheckPointType>;
extern template class VocabularyToString<CheckPointStatus>;
extern template class VocabularyEnumerator<CheckPointStatus>;

}  // namespace quorvance

#pragma GCC visibility pop
