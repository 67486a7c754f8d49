#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quorvance {

/// What the user's locale settings say; nothing for the "C" locale and for malformed names.
struct LocaleNames {
  /// "de_DE", or "de" without a territory.
  std::optional<std::string> locale;
  /// ISO 3166-1 alpha-2 ("DE") or UN M.49 ("419").
  std::optional<std::string> region;
  /// ISO 639, of the first preferred language.
  std::optional<std::string> language;
};

/// The value of a variable, absent when it is not set.
using VariableLookup = std::function<std::optional<std::string>(std::string_view name)>;

/// In the order of libc: the first of LC_ALL, LC_MESSAGES and LANG that is set and not empty is the
/// locale; a list in LANGUAGE decides the preferred language.
LocaleNames localeNamesFrom(const VariableLookup& variable);

/// Whether any of these variables is set, so that no other source is to be asked.
bool namesLocale(const VariableLookup& variable);

}  // namespace quorvance
