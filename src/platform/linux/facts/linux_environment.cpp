#include "platform/linux/facts/linux_environment.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <utility>

namespace quorvance {
namespace {

std::string kernelMachine() {
  utsname names = {};
  return uname(&names) == 0 ? names.machine : std::string();
}

}  // namespace

LinuxEnvironment::LinuxEnvironment(Variables variables)
    : variables_(std::move(variables)), machine_(kernelMachine()) {}

LinuxEnvironment::Variables LinuxEnvironment::processVariables() {
  Variables variables;
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    const std::string_view line = *entry;
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) continue;
    // Of a name set twice the first counts, as for getenv.
    variables.emplace(line.substr(0, equals), line.substr(equals + 1));
  }
  return variables;
}

std::optional<std::string> LinuxEnvironment::variable(std::string_view name) {
  const auto found = variables_.find(name);
  return found == variables_.end() ? std::nullopt : std::optional(found->second);
}

std::string LinuxEnvironment::machine() { return machine_; }

}  // namespace quorvance
