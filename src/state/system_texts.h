#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "quorvance/platform/environment.h"
#include "state/system_facts_reader.h"

namespace quorvance {

/// The version and model texts that every report carries. Any thread; only readSystemVersion()
/// waits.
class SystemTexts {
 public:
  /// Either may be null.
  explicit SystemTexts(std::shared_ptr<EnvironmentSource> environment,
                       std::shared_ptr<SystemFactsReader> system = nullptr);

  /// What is known of the operating system's version now.
  std::optional<std::string> systemVersion() const;
  /// The same, read when nothing is known: not for a thread of the host's.
  std::optional<std::string> readSystemVersion();
  /// One that is absent, or that nobody can read, changes nothing: a known one is not forgotten.
  void setSystemVersion(std::optional<std::string> version);
  /// Runs the task once the version is known, on the thread that sets it; now if it is known
  /// already. One task: a later one takes the place of one that waits.
  void onceSystemVersionIsKnown(std::function<void()> task);

  /// What the simulator's variable names the model, over every source; absent when it is not set,
  /// or set to nothing that can be read.
  std::optional<std::string> simulatedModel() const;
  /// The same, else the machine field of uname(2).
  std::optional<std::string> deviceModel() const;

  /// The library's own version.
  static std::string sdkVersion();

 private:
  const std::shared_ptr<EnvironmentSource> environment_;
  const std::shared_ptr<SystemFactsReader> system_;
  mutable std::mutex mutex_;
  std::optional<std::string> systemVersion_;
  std::function<void()> whenVersionIsKnown_;
};

/// Names the device model; set to whatever, it is the sign of an emulator.
inline constexpr std::string_view kSimulatorModelVariable = "SIMULATOR_MODEL_IDENTIFIER";

}  // namespace quorvance
