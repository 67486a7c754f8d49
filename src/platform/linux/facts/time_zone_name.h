#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quorvance {

/// The IANA time zone in a value of TZ ("Europe/Berlin", ":Europe/Berlin", a path of the zone
/// database). Empty means UTC. Absent for a rule ("CET-1CEST,M3.5.0,M10.5.0/3"), which no zone
/// identifier stands for.
std::optional<std::string> timeZoneOfVariable(std::string_view value);

/// The zone to which a path of the zone database belongs; absent for other paths.
std::optional<std::string> timeZoneOfPath(std::string_view path);

}  // namespace quorvance
