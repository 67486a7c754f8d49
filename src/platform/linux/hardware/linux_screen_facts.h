#pragma once

// What the kernel tells of the machine's parts: the screen, the battery, how the device is held.

#include "platform/linux/facts/root_files.h"
#include "quorvance/platform/device_facts.h"

namespace quorvance {

/// The main screen, as the kernel's display connectors tell it (/sys/class/drm): of those that are
/// connected and have a mode the one that is lit, a built-in panel before others, then by name.
///
/// The native size is its preferred mode. The kernel knows no logical units: they are the native
/// size divided by the scale that desktops choose for the panel's density, so they are told only
/// where the panel tells a plausible physical size. Fact lane only.
class LinuxScreenFacts : public FactSource<ScreenFacts> {
 public:
  explicit LinuxScreenFacts(RootFiles files) : files_(std::move(files)) {}

  ScreenFacts read() override;
  std::string origin(std::string_view field) const override;

 private:
  const RootFiles files_;
};

}  // namespace quorvance
