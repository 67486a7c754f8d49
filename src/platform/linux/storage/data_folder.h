#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quorvance/platform/environment.h"

namespace quorvance {

/// The name as one component of a path: no "/", no NUL, not "." or "..", not too long.
std::string asPathComponent(std::string_view name);

/// $XDG_DATA_HOME / host identifier / "quorvance", ~/.local/share standing in for a variable that
/// is not an absolute path; absent without a home. Only a rule: nothing is looked up or made.
std::optional<std::string> dataFolderFor(EnvironmentSource& environment,
                                         std::string_view hostIdentifier);

}  // namespace quorvance
