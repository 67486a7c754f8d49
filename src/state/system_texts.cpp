#include "state/system_texts.h"

#include <utility>

#include "quorvance/version.h"

namespace quorvance {

SystemTexts::SystemTexts(std::shared_ptr<EnvironmentSource> environment)
    : environment_(std::move(environment)) {}

std::optional<std::string> SystemTexts::systemVersion() const {
  const std::lock_guard lock(mutex_);
  return systemVersion_;
}

void SystemTexts::setSystemVersion(std::optional<std::string> version) {
  const std::lock_guard lock(mutex_);
  systemVersion_ = std::move(version);
}

std::optional<std::string> SystemTexts::deviceModel() const {
  if (!environment_) return std::nullopt;
  if (auto simulated = environment_->variable(kSimulatorModelVariable)) return simulated;
  return environment_->machine();
}

std::string SystemTexts::sdkVersion() { return QuorvanceSDKVersionString; }

}  // namespace quorvance
