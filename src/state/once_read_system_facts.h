#pragma once

#include <memory>
#include <optional>

#include "base/bounded_mutex.h"
#include "quorvance/platform/device_facts.h"

namespace quorvance {

/// The facts of the hardware and the operating system, which do not change under a running process:
/// read once, on whichever background thread asks first. One call at a time reaches the source.
class OnceReadSystemFacts : public FactSource<SystemFacts> {
 public:
  explicit OnceReadSystemFacts(std::shared_ptr<FactSource<SystemFacts>> source);

  /// Any thread that may wait for the disk. All is unknown when another thread has been reading for
  /// two seconds: it may never end.
  SystemFacts read() override;

 private:
  const std::shared_ptr<FactSource<SystemFacts>> source_;
  BoundedMutex mutex_;
  std::optional<SystemFacts> facts_;
};

}  // namespace quorvance
