#pragma once

#include <utility>

#include "platform/linux/bus/bus_place.h"
#include "platform/linux/facts/root_files.h"
#include "quorvance/platform/device_facts.h"

namespace quorvance {

/// Whether the default route is wireless, and what the modem tells. Waits for a bus; fact lane
/// only.
class LinuxNetworkFacts : public FactSource<NetworkFacts> {
 public:
  LinuxNetworkFacts(RootFiles files, BusPlace systemBus)
      : files_(std::move(files)), systemBus_(std::move(systemBus)) {}

  NetworkFacts read() override;
  std::string origin(std::string_view field) const override;

 private:
  const RootFiles files_;
  const BusPlace systemBus_;
};

}  // namespace quorvance
