// The faults that are switched on, and how often each has struck.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "apps/risk_server/faults/fault.h"

namespace risk_server {

// Any thread, guarded by mutex_. Every fault counts all calls of its path (or connections) since
// the list was set, also those that an earlier fault struck. It would strike a call that comes
// after the first `skip`, is among the first `first`, and while it has struck fewer than `times`;
// of several that would, the first in the list does.
class FaultList {
 public:
  void replace(std::vector<Fault> faults);

  // The fault that strikes this call, or this connection; null when none does.
  std::shared_ptr<const Fault> strikeCall(const std::string& path);
  std::shared_ptr<const Fault> strikeConnection();

  // [{"fault": as it was written, "calls": N, "struck": N}, ...]
  Json asJson() const;

 private:
  struct Entry {
    std::shared_ptr<const Fault> fault;
    std::uint64_t calls = 0;
    std::uint64_t struck = 0;
  };
  template <typename Matches>
  std::shared_ptr<const Fault> strike(const Matches& matches);

  mutable std::mutex mutex_;
  std::vector<Entry> entries_;
};

}  // namespace risk_server
