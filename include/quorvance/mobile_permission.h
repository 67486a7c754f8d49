#pragma once

#include <cstdint>

#include "quorvance/vocabulary.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// A kind of permission that an application may ask its user for.
enum class MobilePermission : std::int64_t {
  READ_CONTACTS = 0,
  /// Location at any time.
  AUTHORIZED_ALWAYS = 1,
  /// Location while the application is in use.
  AUTHORIZED_WHEN_IN_USE = 2,
  CAMERA = 3,
  REMINDER = 4,
  CALENDAR = 5,
  PHOTO = 6,
};

/// An unknown word reads as CALENDAR.
using MobilePermissionToString = VocabularyToString<MobilePermission>;
using MobilePermissionEnumerator = VocabularyEnumerator<MobilePermission>;

extern template class VocabularyToString<MobilePermission>;
extern template class VocabularyEnumerator<MobilePermission>;

}  // namespace quorvance

#pragma GCC visibility pop
