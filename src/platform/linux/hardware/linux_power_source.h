#pragma once

#include "platform/linux/facts/root_files.h"
#include "quorvance/platform/device_facts.h"

namespace quorvance {

/// The first battery of the machine itself (/sys/class/power_supply), by name; those of mice and
/// headsets are not its own. Linux has no switch for battery monitoring. Fact lane only: a bad
/// gauge may take milliseconds.
class LinuxPowerSource : public PowerSource {
 public:
  explicit LinuxPowerSource(RootFiles files) : files_(std::move(files)) {}

  std::optional<bool> isMonitoringEnabled() override { return std::nullopt; }
  void setMonitoringEnabled(bool /*on*/) override {}
  BatteryReading read() override;
  std::string origin(std::string_view field) const override;

 private:
  const RootFiles files_;
};

}  // namespace quorvance
