#include "state/system_texts.h"

#include <utility>

#include "base/text.h"
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
