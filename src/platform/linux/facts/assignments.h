#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace quorvance {

using Assignments = std::map<std::string, std::string, std::less<>>;

/// Reads the shell-like NAME=VALUE lines of os-release(5), machine-info(5) and locale.conf(5):
/// comments, single and double quotes and backslashes; nothing is expanded. Of a name set twice the
/// last counts; lines that are no assignment are skipped.
Assignments parseAssignments(std::string_view text);

/// The value, absent when it is not set or blank.
std::optional<std::string> assigned(const Assignments& assignments, std::string_view name);

}  // namespace quorvance
