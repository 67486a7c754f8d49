#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quorvance {

/// The kind of device ("desktop", "laptop", "tablet", "handset", "server" ...) for the decimal text
/// of a chassis type (SMBIOS 3, section 7.4.1); absent for types that tell nothing.
std::optional<std::string> chassisKind(std::string_view chassisType);

}  // namespace quorvance
