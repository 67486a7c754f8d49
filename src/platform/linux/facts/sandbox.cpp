#include "platform/linux/facts/sandbox.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace quorvance {
namespace {

/// "name" in the group "Application" of the key file that Flatpak puts into every sandbox.
std::optional<std::string> flatpakName(std::string_view keyFile) {
  constexpr std::string_view kName = "name=";
  bool isInGroup = false;
  while (!keyFile.empty()) {
    const std::size_t end = std::min(keyFile.find('\n'), keyFile.size());
    const std::string_view line = keyFile.substr(0, end);
    if (line.starts_with('[')) isInGroup = line == "[Application]";
    if (isInGroup && line.starts_with(kName)) return cleanFact(line.substr(kName.size()));
    keyFile.remove_prefix(std::min(end + 1, keyFile.size()));
  }
  return std::nullopt;
}

}  // namespace

Sandbox sandboxOf(EnvironmentSource& environment, const RootFiles& files,
                  const std::string& hostIdentifier) {
  if (const auto keyFile = files.text("/.flatpak-info")) {
    return {true, flatpakName(*keyFile).value_or(hostIdentifier)};
  }
  const std::string snap = environment.variable("SNAP_INSTANCE_NAME").value_or("");
  if (!snap.empty()) return {true, "snap." + snap};
  return {false, hostIdentifier};
}

}  // namespace quorvance
