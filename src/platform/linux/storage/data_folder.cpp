#include "platform/linux/storage/data_folder.h"

#include <algorithm>
#include <cstddef>

namespace quorvance {
namespace {

// NAME_MAX of the common file systems is 255.
constexpr std::size_t kMaxComponentBytes = 200;

std::optional<std::string> absolutePath(EnvironmentSource& environment, std::string_view name) {
  std::optional<std::string> path = environment.variable(name);
  if (!path || !path->starts_with('/')) return std::nullopt;
  while (path->ends_with('/')) path->pop_back();
  return path;
}

}  // namespace

std::string asPathComponent(std::string_view name) {
  std::string component(name.substr(0, kMaxComponentBytes));
  std::replace(component.begin(), component.end(), '/', '_');
  std::replace(component.begin(), component.end(), '\0', '_');
  if (component.empty()) return "_";
  if (component == "." || component == "..") std::fill(component.begin(), component.end(), '_');
  return component;
}

std::optional<std::string> dataFolderFor(EnvironmentSource& environment,
                                         std::string_view hostIdentifier) {
  std::optional<std::string> base = absolutePath(environment, "XDG_DATA_HOME");
  if (!base) {
    base = absolutePath(environment, "HOME");
    if (!base) return std::nullopt;
    *base += "/.local/share";
  }
  return *base + "/" + asPathComponent(hostIdentifier) + "/quorvance";
}

}  // namespace quorvance
