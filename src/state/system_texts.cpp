#include "state/system_texts.h"

#include <utility>

#include "quorvance/version.h"

namespace quorvance {

SystemTexts::SystemTexts(std::shared_ptr<EnvironmentSource> environment,
                         std::shared_ptr<FactSource<SystemFacts>> system)
    : environment_(std::move(environment)), system_(std::move(system)) {}

std::optional<std::string> SystemTexts::systemVersion() const {
  const std::lock_guard lock(mutex_);
  return systemVersion_;
}

std::optional<std::string> SystemTexts::readSystemVersion() {
  std::optional<std::string> version = systemVersion();
  if (version || !system_) return version;
  version = system_->read().systemVersion;
  if (version) setSystemVersion(version);
  return version;
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
