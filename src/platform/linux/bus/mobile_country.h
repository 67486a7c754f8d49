#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quorvance {

/// The country of a mobile country code (ITU-T E.212), as ISO 3166-1 alpha-2.
std::optional<std::string> countryOf(std::string_view mobileCountryCode);

}  // namespace quorvance
