#pragma once

#include "quorvance/json.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// The host's user data (contacts, photo counts, calendars, reminders). Read in the
/// background. Throws nothing.
class UserDataSource {
 public:
  virtual ~UserDataSource() = default;
  /// A JSON object; it is sent as it stands. One that cannot be written (a NaN, an infinity, nested
  /// deeper than 128), and what is no object, counts as an empty one.
  virtual Json collect() = 0;
};

}  // namespace quorvance

#pragma GCC visibility pop
