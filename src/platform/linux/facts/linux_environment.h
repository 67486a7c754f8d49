#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "quorvance/platform/environment.h"

namespace quorvance {

/// A copy of the process environment: reading the live one would race with the host's changes.
/// Immutable.
class LinuxEnvironment : public EnvironmentSource {
 public:
  using Variables = std::map<std::string, std::string, std::less<>>;

  explicit LinuxEnvironment(Variables variables);
  /// The process environment as it stands now.
  static Variables processVariables();

  std::optional<std::string> variable(std::string_view name) override;
  std::string machine() override;

 private:
  const Variables variables_;
  const std::string machine_;
};

}  // namespace quorvance
