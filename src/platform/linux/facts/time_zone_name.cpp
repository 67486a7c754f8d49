#include "platform/linux/facts/time_zone_name.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace quorvance {
namespace {

constexpr std::string_view kDatabase = "zoneinfo/";
// Copies of the whole database, without and with leap seconds.
constexpr std::string_view kSubsets[] = {"posix/", "right/"};
// Zones whose names look like rules.
constexpr std::string_view kZonesLikeRules[] = {"EST5EDT", "CST6CDT", "MST7MDT", "PST8PDT"};
constexpr std::size_t kMaxZoneBytes = 64;

bool isZoneDigit(char c) { return c >= '0' && c <= '9'; }

bool isZoneCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || isZoneDigit(c) || c == '/' ||
         c == '_' || c == '-' || c == '+';
}

std::optional<std::string> zoneNamed(std::string_view name) {
  const bool isName = !name.empty() && name.size() <= kMaxZoneBytes && !name.starts_with('/') &&
                      std::all_of(name.begin(), name.end(), isZoneCharacter);
  return isName ? std::optional<std::string>(name) : std::nullopt;
}

bool looksLikeRule(std::string_view value) {
  if (std::find(std::begin(kZonesLikeRules), std::end(kZonesLikeRules), value) !=
      std::end(kZonesLikeRules)) {
    return false;
  }
  return value.find('/') == std::string_view::npos &&
         std::any_of(value.begin(), value.end(), isZoneDigit);
}

}  // namespace

std::optional<std::string> timeZoneOfVariable(std::string_view value) {
  if (value.starts_with(':')) value.remove_prefix(1);
  if (value.empty()) return "UTC";
  if (value.starts_with('/')) return timeZoneOfPath(value);
  return looksLikeRule(value) ? std::nullopt : zoneNamed(value);
}

std::optional<std::string> timeZoneOfPath(std::string_view path) {
  const std::size_t database = path.find(kDatabase);
  if (database == std::string_view::npos) return std::nullopt;
  path.remove_prefix(database + kDatabase.size());
  for (const std::string_view subset : kSubsets) {
    if (path.starts_with(subset)) path.remove_prefix(subset.size());
  }
  return zoneNamed(path);
}

}  // namespace quorvance
