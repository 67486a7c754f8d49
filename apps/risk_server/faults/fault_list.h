// The faults that are switched on, and how often each was applied.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "apps/risk_server/faults/fault.h"

namespace risk_server {

// Any thread, guarded by mutex_. Every fault counts all calls of its path (or connections) since
// the list was set, also those that got an earlier fault. It is due for a call that comes after the
// first `skip`, is among the first `first`, and while it was applied fewer than `times` times; of
// several that are due, the first in the list is applied.
class FaultList {
 public:
  // The version of the new list. Changes nothing and returns nothing when a version is given and is
  // not the one in force.
  std::optional<std::uint64_t> replace(std::vector<Fault> faults,
                                       std::optional<std::uint64_t> onlyVersion = std::nullopt);

  // Counts the call, or the connection, and gives the fault that is applied to it; null for none.
  std::shared_ptr<const Fault> applyToCall(const std::string& path);
  std::shared_ptr<const Fault> applyToConnection();

  // [{"fault": as it was written, "calls": N, "struck": how often it was applied}, ...]
  Json asJson() const;
  // One more with each replacement.
  std::uint64_t version() const;

 private:
  struct Entry {
    std::shared_ptr<const Fault> fault;
    std::uint64_t calls = 0;
    std::uint64_t applied = 0;
  };
  template <typename Matches>
  std::shared_ptr<const Fault> apply(const Matches& matches);

  mutable std::mutex mutex_;
  std::vector<Entry> entries_;
  std::uint64_t version_ = 0;
};

}  // namespace risk_server
