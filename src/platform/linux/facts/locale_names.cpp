#include "platform/linux/facts/locale_names.h"

#include <algorithm>
#include <cstddef>

namespace quorvance {
namespace {

constexpr std::string_view kLocaleVariables[] = {"LC_ALL", "LC_MESSAGES", "LANG"};

struct LocaleParts {
  std::string language;
  std::string region;
};

bool isLower(char c) { return c >= 'a' && c <= 'z'; }
bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }
bool isDigitOfRegion(char c) { return c >= '0' && c <= '9'; }

bool isLanguage(std::string_view text) {
  return (text.size() == 2 || text.size() == 3) && std::all_of(text.begin(), text.end(), isLower);
}

bool isRegion(std::string_view text) {
  return (text.size() == 2 && std::all_of(text.begin(), text.end(), isUpper)) ||
         (text.size() == 3 && std::all_of(text.begin(), text.end(), isDigitOfRegion));
}

/// language[_REGION][.codeset][@modifier]
std::optional<LocaleParts> partsOf(std::string_view name) {
  name = name.substr(0, name.find_first_of(".@"));
  const std::size_t underscore = std::min(name.find('_'), name.size());
  const std::string_view language = name.substr(0, underscore);
  const std::string_view region = name.substr(std::min(underscore + 1, name.size()));
  if (!isLanguage(language) || !(region.empty() || isRegion(region))) return std::nullopt;
  return LocaleParts{std::string(language), std::string(region)};
}

std::optional<std::string> setLocaleName(const VariableLookup& variable) {
  for (const std::string_view name : kLocaleVariables) {
    std::optional<std::string> value = variable(name);
    if (value && !value->empty()) return value;
  }
  return std::nullopt;
}

/// The first language of a list like "de_AT:de:en" that is one.
std::optional<std::string> firstLanguage(std::string_view list) {
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(':'), list.size());
    if (auto parts = partsOf(list.substr(0, end))) return std::move(parts->language);
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return std::nullopt;
}

}  // namespace

LocaleNames localeNamesFrom(const VariableLookup& variable) {
  LocaleNames names;
  names.language = firstLanguage(variable("LANGUAGE").value_or(""));
  const auto parts = partsOf(setLocaleName(variable).value_or(""));
  if (!parts) return names;
  names.locale = parts->region.empty() ? parts->language : parts->language + "_" + parts->region;
  if (!parts->region.empty()) names.region = parts->region;
  if (!names.language) names.language = parts->language;
  return names;
}

bool namesLocale(const VariableLookup& variable) {
  return setLocaleName(variable).has_value() || !variable("LANGUAGE").value_or("").empty();
}

}  // namespace quorvance
