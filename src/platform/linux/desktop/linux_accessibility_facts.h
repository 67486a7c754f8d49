#pragma once

#include <memory>

#include "platform/linux/bus/bus_place.h"
#include "platform/linux/facts/root_files.h"
#include "quorvance/platform/device_facts.h"

namespace quorvance {

/// Settings of the user interface: each from the host's own source, if it tells, else from the
/// desktop. Waits for a bus; fact lane only.
class LinuxAccessibilityFacts : public FactSource<AccessibilityFacts> {
 public:
  /// `host` may be null.
  LinuxAccessibilityFacts(std::shared_ptr<FactSource<AccessibilityFacts>> host, BusPlace sessionBus,
                          RootFiles files);

  AccessibilityFacts read() override;
  std::string origin(std::string_view field) const override;

 private:
  const std::shared_ptr<FactSource<AccessibilityFacts>> host_;
  const BusPlace sessionBus_;
  const RootFiles files_;
};

}  // namespace quorvance
