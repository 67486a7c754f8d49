// The parts of a request target of the control path.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace risk_server {

// The target without its query.
std::string pathOfTarget(std::string_view target);

// The value of the first "NAME=VALUE" of the query, percent-decoded.
std::optional<std::string> queryValue(std::string_view target, std::string_view name);

// Digits alone.
std::optional<std::uint64_t> numberFromText(std::string_view text);

}  // namespace risk_server
