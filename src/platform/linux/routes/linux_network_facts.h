#pragma once

#include "platform/linux/facts/root_files.h"
#include "quorvance/platform/device_facts.h"

namespace quorvance {

/// Whether the default route is wireless. Fact lane only.
class LinuxNetworkFacts : public FactSource<NetworkFacts> {
 public:
  explicit LinuxNetworkFacts(RootFiles files) : files_(std::move(files)) {}

  NetworkFacts read() override;
  std::string origin(std::string_view field) const override;

 private:
  const RootFiles files_;
};

}  // namespace quorvance
