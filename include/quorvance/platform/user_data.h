#pragma once

#include <nlohmann/json.hpp>

#include "quorvance/json_conversion.h"

#pragma GCC visibility push(default)

namespace quorvance {

/// What the library asks, without a type of the JSON library. A host implements UserDataSource.
class UserDataSourceBase {
 public:
  virtual ~UserDataSourceBase();
  /// Gives one value, in the background; null when it gives none. Throws nothing.
  virtual void writeUserData(JsonSink& sink) = 0;
};

}  // namespace quorvance

#pragma GCC visibility pop

namespace quorvance {
inline namespace QUORVANCE_JSON_NAMESPACE {

/// The host's user data (contacts, photo counts, calendars, reminders). Read in the
/// background. Throws nothing.
class UserDataSource : public UserDataSourceBase {
 public:
  /// A JSON object; it is sent as it stands. One that cannot be written (a NaN, an infinity, nested
  /// deeper than 127), and what is no object, counts as an empty one.
  virtual Json collect() = 0;

  void writeUserData(JsonSink& sink) override { giveJson(sink, collect()); }
};

}  // namespace QUORVANCE_JSON_NAMESPACE
}  // namespace quorvance
