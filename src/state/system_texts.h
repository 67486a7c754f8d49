#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "quorvance/platform/environment.h"

namespace quorvance {

/// The version and model texts that every report carries. Any thread, never waits: the version of
/// the operating system is known once the device facts have been read.
class SystemTexts {
 public:
  explicit SystemTexts(std::shared_ptr<EnvironmentSource> environment);

  std::optional<std::string> systemVersion() const;
  void setSystemVersion(std::optional<std::string> version);

  /// What the simulator's variable names the model, over every source; absent when it is not set,
  /// or set to nothing that can be read.
  std::optional<std::string> simulatedModel() const;
  /// The same, else the machine field of uname(2).
  std::optional<std::string> deviceModel() const;

  /// The library's own version.
  static std::string sdkVersion();

 private:
  const std::shared_ptr<EnvironmentSource> environment_;
  mutable std::mutex mutex_;
  std::optional<std::string> systemVersion_;
};

/// Names the device model; set to whatever, it is the sign of an emulator.
inline constexpr std::string_view kSimulatorModelVariable = "SIMULATOR_MODEL_IDENTIFIER";

}  // namespace quorvance
