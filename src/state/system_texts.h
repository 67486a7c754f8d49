#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "quorvance/platform/device_facts.h"
#include "quorvance/platform/environment.h"

namespace quorvance {

/// The version and model texts that every report carries. Any thread; only readSystemVersion()
/// waits.
class SystemTexts {
 public:
  /// Either may be null.
  explicit SystemTexts(std::shared_ptr<EnvironmentSource> environment,
                       std::shared_ptr<FactSource<SystemFacts>> system = nullptr);

  /// What is known of the operating system's version now.
  std::optional<std::string> systemVersion() const;
  /// The same, read when nothing is known: not for a thread of the host's.
  std::optional<std::string> readSystemVersion();
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
  const std::shared_ptr<FactSource<SystemFacts>> system_;
  mutable std::mutex mutex_;
  std::optional<std::string> systemVersion_;
};

/// Names the device model; set to whatever, it is the sign of an emulator.
inline constexpr std::string_view kSimulatorModelVariable = "SIMULATOR_MODEL_IDENTIFIER";

}  // namespace quorvance
