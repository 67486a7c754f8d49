#include "state/system_texts.h"

#include <utility>

#include "base/text.h"
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

std::optional<std::string> SystemTexts::simulatedModel() const {
  if (!environment_) return std::nullopt;
  auto model = environment_->variable(kSimulatorModelVariable);
  if (model && (model->empty() || !isReadableText(*model))) model.reset();
  return model;
}

std::optional<std::string> SystemTexts::deviceModel() const {
  if (auto simulated = simulatedModel()) return simulated;
  return environment_ ? std::optional(environment_->machine()) : std::nullopt;
}

std::string SystemTexts::sdkVersion() { return QuorvanceSDKVersionString; }

}  // namespace quorvance
