#include "state/system_texts.h"

#include <utility>

#include "base/text.h"
#include "quorvance/version.h"

namespace quorvance {

SystemTexts::SystemTexts(std::shared_ptr<EnvironmentSource> environment,
                         std::shared_ptr<SystemFactsReader> system)
    : environment_(std::move(environment)), system_(std::move(system)) {}

std::optional<std::string> SystemTexts::systemVersion() const {
  const std::lock_guard lock(mutex_);
  return systemVersion_;
}

std::optional<std::string> SystemTexts::readSystemVersion() {
  std::optional<std::string> version = systemVersion();
  if (version || !system_) return version;
  if (const auto facts = system_->read()) setSystemVersion(facts->systemVersion);
  return systemVersion();
}

void SystemTexts::setSystemVersion(std::optional<std::string> version) {
  if (!version || !isReadableText(*version)) return;
  std::function<void()> task;
  {
    const std::lock_guard lock(mutex_);
    systemVersion_ = std::move(version);
    task.swap(whenVersionIsKnown_);
  }
  if (task) task();
}

void SystemTexts::onceSystemVersionIsKnown(std::function<void()> task) {
  {
    const std::lock_guard lock(mutex_);
    if (!systemVersion_) return whenVersionIsKnown_.swap(task);
  }
  task();
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
